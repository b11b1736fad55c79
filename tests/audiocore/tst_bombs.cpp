// Files that say more than they hold: whatever they say, reading takes memory and steps in bounds.
#include "audiofile.h"
#include "bombs.h"
#include "fixtures.h"
#include "identify/fingerprint.h"
#include "media/checkedstream.h"
#include "parts.h"
#include "sanitized.h"

#include "audiocore/iaudiodecoder.h"
#include "audiocore/iaudioplayer.h"
#include "audiocore/iaudiotag.h"

#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

#include <cstdio>
#include <fstream>
#include <sys/resource.h>

namespace {
constexpr qint64 megabyte = 1 << 20;
const char* const feedOption = "--feed";

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

/// What the process that takes the risk does.
int feed(const QString& call, const QString& path)
{
    if (!sanitized)
        limit(RLIMIT_AS, 512 * megabyte);
    limit(RLIMIT_CPU, sanitized ? 200 : 20); // seconds of its own work: other processes do not count
    const qint64 before = peakMemory();
    const std::u32string wide = path.toStdU32String();
    const qint64 picture = call == "read" ? read(wide) : call == "save" ? save(wide) : playAndIdentify(path);
    std::printf("picture %lld\nmemory %lld\nsteps %lld\n", qlonglong(picture),
                qlonglong(peakMemory() - before), qlonglong(audiocore::CheckedStream::stepsOfThread()));
    return 0;
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

private:
    struct Outcome
    {
        bool survived = false;
        QHash<QByteArray, qint64> numbers;
        QByteArray errors;
    };
    static QByteArray contentOf(const QString& path);
    QString written(const char* suffix, const QByteArray& bytes) const;
    static Outcome feedTo(const QString& call, const QString& path);
    static void readingStaysInBounds(const QString& path);
    static void playingAndIdentifyingEnd(const QString& path);
    static void savingKeepsOrSays(const QString& path, const QByteArray& before);

    const Part m_part;
    QTemporaryDir m_folder;
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

TestBombs::Outcome TestBombs::feedTo(const QString& call, const QString& path)
{
    QProcess process;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("MALLOC_ARENA_MAX", "1"); // every thread would set an address space of its own apart
    environment.insert("MELODRIFT_AUDIO_OUTPUT", "null");
    process.setProcessEnvironment(environment);
    process.start(QCoreApplication::applicationFilePath(), {feedOption, call, path});
    Outcome outcome;
    outcome.survived = process.waitForFinished(500000) && process.exitStatus() == QProcess::NormalExit &&
                       process.exitCode() == 0;
    outcome.errors = process.readAllStandardError().right(1000);
    for (const QByteArray& line : process.readAllStandardOutput().split('\n')) {
        const QList<QByteArray> words = line.split(' ');
        if (words.size() == 2)
            outcome.numbers.insert(words.first(), words.last().toLongLong());
    }
    return outcome;
}

void TestBombs::readingStaysInBounds(const QString& path)
{
    const Outcome outcome = feedTo("read", path);
    QVERIFY2(outcome.survived, outcome.errors.constData());
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
    const Outcome outcome = feedTo("play", path);
    QVERIFY2(outcome.survived, outcome.errors.constData());
}

void TestBombs::savingKeepsOrSays(const QString& path, const QByteArray& before)
{
    const Outcome outcome = feedTo("save", path);
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

int main(int argc, char** argv)
{
    if (argc == 4 && qstrcmp(argv[1], feedOption) == 0)
        return feed(QFile::decodeName(argv[2]), QFile::decodeName(argv[3]));
    QCoreApplication application(argc, argv);
    if (sanitized)
        qInfo("the sanitizer needs more addresses than the limit leaves: memory is not looked at here");
    QStringList arguments = QCoreApplication::arguments();
    TestBombs test{Part(arguments)};
    return QTest::qExec(&test, arguments);
}
#include "tst_bombs.moc"
