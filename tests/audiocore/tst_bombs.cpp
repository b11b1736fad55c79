// Files that say more than they hold: whatever they say, reading takes memory and steps in bounds.
#include "audiofile.h"
#include "bombs.h"
#include "fixtures.h"
#include "identify/fingerprint.h"
#include "media/checkedstream.h"
#include "parts.h"
#include "sanitized.h"
#include "told.h"

#include "audiocore/iaudiodecoder.h"
#include "audiocore/iaudioplayer.h"
#include "audiocore/iaudiotag.h"

#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

#include <cstdio>
#include <ctime>
#include <fstream>
#include <iostream>
#include <memory>
#include <string>
#include <sys/resource.h>

namespace {
constexpr qint64 megabyte = 1 << 20;
const char* const feedOption = "--feed";
const char* const fed = "fed";
constexpr int patienceWithWork = 500000; // milliseconds: some of it is work for minutes

/// The most memory that the process ever had at once, in bytes.
qint64 peakMemory()
{
    std::ifstream status("/proc/self/status");
    std::string word;
    while (status >> word)
        if (word == "VmHWM:") {
            qint64 kilobytes = 0;
            status >> kilobytes;
            return kilobytes * 1024;
        }
    return 0;
}

void limit(__rlimit_resource resource, rlim_t most)
{
    const rlimit both{most, most};
    ::setrlimit(resource, &both);
}

/// The bytes of the picture among the items; -1 when an item's size makes no sense.
qint64 readItems(IAudioTag& tag)
{
    qint64 picture = 0;
    const int count = tag.GetItemCount();
    for (int i = 0; i < count; ++i) {
        const TagItem item = tag.GetItem(i);
        if (item.size <= 0 || !item.data)
            return -1;
        if (item.dataKind != 0)
            picture = item.size;
    }
    return picture;
}

qint64 read(const std::u32string& path)
{
    IAudioTag* tag = CreateTag();
    tag->Open(path.c_str());
    const qint64 picture = readItems(*tag);
    ::operator delete(tag);
    IAudioDecoder* decoder = CreateDecoder();
    decoder->Open(path.c_str());
    const bool sensible = decoder->GetDuration() >= 0 && decoder->GetSampleRate() >= 0 &&
                          decoder->GetSampleRate() <= 768000 && decoder->GetBitrate() >= 0;
    ::operator delete(decoder);
    return sensible ? picture : -1;
}

qint64 save(const std::u32string& path)
{
    std::u32string title = U"New";
    IAudioTag* tag = CreateTag();
    tag->Open(path.c_str());
    tag->RemoveItem(TAG_TITLE);
    tag->SetItem({-1, TAG_TITLE, 0, int(title.size() * 4), title.data()});
    const int saved = tag->Save();
    ::operator delete(tag);
    std::printf("saved %d\n", saved);
    return read(path);
}

qint64 playAndIdentify(const QString& path)
{
    const std::u32string wide = path.toStdU32String();
    IAudioPlayer* player = CreatePlayer();
    player->Open(wide.c_str());
    player->Play();
    player->GetState();
    DestroyPlayer(player);
    const audiocore::Cancellation never;
    audiocore::fingerprintOf(path.toStdString(), never);
    return 0;
}

/// Lets the process work so long from now on. It is killed for more; what other processes do does not count.
void limitWork(rlim_t seconds)
{
    timespec used{};
    ::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &used);
    const rlimit limits{rlim_t(used.tv_sec) + seconds, RLIM_INFINITY};
    ::setrlimit(RLIMIT_CPU, &limits);
}

void feed(const QString& call, const QString& path)
{
    limitWork(sanitized ? 200 : 20);
    const qint64 before = peakMemory();
    const std::u32string wide = path.toStdU32String();
    const qint64 picture = call == "read" ? read(wide) : call == "save" ? save(wide) : playAndIdentify(path);
    std::printf("picture %lld\nmemory %lld\nsteps %lld\n%s\n", qlonglong(picture),
                qlonglong(peakMemory() - before), qlonglong(audiocore::CheckedStream::stepsOfThread()), fed);
    std::fflush(stdout);
}

/// What the process that takes the risk does: one call with each of the files that it is told of.
int feedAll(const QString& call)
{
    if (!sanitized)
        limit(RLIMIT_AS, 512 * megabyte);
    for (std::string path; std::getline(std::cin, path);)
        feed(call, QFile::decodeName(path.c_str()));
    return 0;
}

/// A process that takes the risk.
class Taster
{
public:
    explicit Taster(const QString& call);
    ~Taster();

    struct Outcome
    {
        bool survived = false;
        QHash<QByteArray, qint64> numbers;
        QByteArray errors;
    };
    Outcome feed(const QString& path);
    /// Whether it ended well.
    bool end();
    /// What it said last of what went wrong.
    QByteArray errors() { return m_process.readAllStandardError().right(1000); }

private:
    QProcess m_process;
};

Taster::Taster(const QString& call)
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("MALLOC_ARENA_MAX", "1"); // every thread would set an address space of its own apart
    environment.insert("MELODRIFT_AUDIO_OUTPUT", "null");
    m_process.setProcessEnvironment(environment);
    m_process.start(QCoreApplication::applicationFilePath(), {feedOption, call});
}

Taster::~Taster()
{
    m_process.kill();
    m_process.waitForFinished();
}

Taster::Outcome Taster::feed(const QString& path)
{
    m_process.write(QFile::encodeName(path) + '\n');
    Outcome outcome;
    Told told(m_process);
    QByteArray line;
    do {
        line = told.line({}, patienceWithWork);
        const QList<QByteArray> words = line.split(' ');
        if (words.size() == 2)
            outcome.numbers.insert(words.first(), words.last().toLongLong());
    } while (!line.isEmpty() && line != fed);
    outcome.survived = line == fed;
    outcome.errors = errors();
    return outcome;
}

bool Taster::end()
{
    m_process.closeWriteChannel();
    return m_process.waitForFinished(patienceWithWork) && m_process.exitStatus() == QProcess::NormalExit &&
           m_process.exitCode() == 0;
}
} // namespace

class TestBombs : public QObject
{
    Q_OBJECT

public:
    explicit TestBombs(const Part& part) : m_part(part) {}

private slots:
    void noBombDoesHarm_data();
    void noBombDoesHarm();
    void whoHadThemAllEndsWell();

private:
    static QByteArray contentOf(const QString& path);
    QString written(const char* suffix, const QByteArray& bytes) const;
    static void readingStaysInBounds(const QString& path);
    static Taster::Outcome feed(std::unique_ptr<Taster>& taster, const QString& call, const QString& path);
    void playingAndIdentifyingEnd(const QString& path);
    void savingKeepsOrSays(const QString& path, const QByteArray& before);

    const Part m_part;
    QTemporaryDir m_folder;
    std::unique_ptr<Taster> m_player; ///< of all bombs so far, as in the program
    std::unique_ptr<Taster> m_saver;
};

Q_DECLARE_METATYPE(Bombs::Bomb)

QByteArray TestBombs::contentOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QString TestBombs::written(const char* suffix, const QByteArray& bytes) const
{
    const QString path = m_folder.filePath(QString("bomb.") + suffix);
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) < 0)
        qFatal("cannot write %s", qUtf8Printable(path));
    return path;
}

/// A taster that did not survive is not asked again.
Taster::Outcome TestBombs::feed(std::unique_ptr<Taster>& taster, const QString& call, const QString& path)
{
    if (!taster)
        taster = std::make_unique<Taster>(call);
    Taster::Outcome outcome = taster->feed(path);
    if (!outcome.survived)
        taster.reset();
    return outcome;
}

void TestBombs::readingStaysInBounds(const QString& path)
{
    Taster taster("read"); // a new one, whose memory was never larger
    const Taster::Outcome outcome = taster.feed(path);
    QVERIFY2(outcome.survived, outcome.errors.constData());
    const bool ended = taster.end();
    QVERIFY2(ended, taster.errors().constData());
    const qint64 picture = outcome.numbers.value("picture");
    QVERIFY(picture >= 0);
    const qint64 memory = outcome.numbers.value("memory");
    if (!sanitized) // which keeps what is freed
        QVERIFY2(memory <= 64 * megabyte + picture, qPrintable(QString::number(memory / megabyte)));
    const qint64 steps = outcome.numbers.value("steps");
    QVERIFY2(steps <= 20000 + QFileInfo(path).size() / 2, qPrintable(QString::number(steps)));
    qInfo("%lld kB of file: %lld MB, %lld steps", QFileInfo(path).size() / 1024, memory / megabyte, steps);
}

void TestBombs::playingAndIdentifyingEnd(const QString& path)
{
    const Taster::Outcome outcome = feed(m_player, "play", path);
    QVERIFY2(outcome.survived, outcome.errors.constData());
}

void TestBombs::savingKeepsOrSays(const QString& path, const QByteArray& before)
{
    const Taster::Outcome outcome = feed(m_saver, "save", path);
    QVERIFY2(outcome.survived, outcome.errors.constData());
    QVERIFY(outcome.numbers.value("picture") >= 0);
    if (outcome.numbers.value("saved") == 0)
        QCOMPARE(AudioFile::read(path).texts.value(TAG_TITLE), QString("New"));
    else
        QVERIFY(contentOf(path) == before);
    qInfo("%s", outcome.numbers.value("saved") == 0 ? "saved" : "refused");
}

void TestBombs::noBombDoesHarm_data()
{
    QTest::addColumn<Bombs::Bomb>("bomb");
    int row = 0;
    for (const Bombs::Bomb& bomb : Bombs::all())
        if (m_part.has(row++))
            QTest::newRow(bomb.name) << bomb;
}

void TestBombs::noBombDoesHarm()
{
    QFETCH(Bombs::Bomb, bomb);
    const QByteArray bytes = bomb.make(); // takes as long as what is done to it
    const QString path = written(bomb.suffix, bytes);
    readingStaysInBounds(path);
    playingAndIdentifyingEnd(path);
    savingKeepsOrSays(path, bytes); // the last, since it changes the file
}

/// Also a leak is told then.
void TestBombs::whoHadThemAllEndsWell()
{
    for (Taster* const taster : {m_player.get(), m_saver.get()}) {
        const bool ended = !taster || taster->end();
        QVERIFY2(ended, taster ? taster->errors().constData() : "");
    }
}

int main(int argc, char** argv)
{
    if (argc == 3 && qstrcmp(argv[1], feedOption) == 0)
        return feedAll(QString::fromLatin1(argv[2]));
    QCoreApplication application(argc, argv);
    if (sanitized)
        qInfo("the sanitizer needs more addresses than the limit leaves: memory is not looked at here");
    QStringList arguments = QCoreApplication::arguments();
    TestBombs test{Part(arguments)};
    return QTest::qExec(&test, arguments);
}
#include "tst_bombs.moc"
