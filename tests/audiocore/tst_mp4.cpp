#include "audiocore/tagitem.h"
#include "audiofile.h"
#include "fixtures.h"
#include "media/checkedstream.h"
#include "mp4fixture.h"
#include "sound.h"
#include "tags/mediafile.h"
#include "tags/tagfields.h"
#include "tags/tagwriting.h"

#include <QProcess>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QtTest>

using audiocore::CheckedStream;

namespace {
QByteArray contentOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

bool ffmpeg(const QStringList& arguments)
{
    QProcess process;
    process.start(QStringLiteral("ffmpeg"),
                  QStringList{QStringLiteral("-v"), QStringLiteral("error")} + arguments);
    return process.waitForFinished(patience) && process.exitCode() == 0;
}

/// A sum of the sound, all of which can be decoded.
QByteArray soundOf(const QString& path)
{
    int damaged = 0;
    const QByteArray sum = Sound::sumOf(path, &damaged);
    return damaged == 0 ? sum : QByteArray();
}

quint32 numberAt(const QByteArray& bytes, int at)
{
    return qFromBigEndian<quint32>(bytes.constData() + at);
}

/// The same with its table of pieces in wide numbers: everything is put together anew.
QByteArray withWideTable(QByteArray file)
{
    const int table = file.indexOf("stco") - 4;
    const quint32 size = numberAt(file, table);
    QByteArray entries;
    const int grown = int(size) - 16;
    for (int at = table + 16; at < table + int(size); at += 4)
        entries += Mp4::number64(numberAt(file, at) + quint32(grown));
    file.replace(table, int(size), Mp4::table("co64", quint32(entries.size()) / 8, entries));
    for (const char* around : {"moov", "trak", "mdia", "minf", "stbl"}) {
        const int at = file.indexOf(around) - 4;
        file.replace(at, 4, Mp4::number(numberAt(file, at) + quint32(grown)));
    }
    return file;
}

/// Whether the index at the end, where there is one, says where the fragments are.
bool indexIsRight(const QByteArray& file)
{
    const int index = file.indexOf("tfra");
    if (index < 0)
        return true;
    const bool wide = file.at(index + 4) == 1;
    const int size = (wide ? 16 : 8) + 3; // the three numbers behind have a byte each
    const int count = int(numberAt(file, index + 16));
    for (int entry = 0; entry < count; ++entry) {
        const int place = index + 20 + entry * size + (wide ? 12 : 4);
        if (file.mid(int(numberAt(file, place)) + 4, 4) != "moof")
            return false;
    }
    return count > 0 && (numberAt(file, index + 12) & 63) == 0;
}

struct Work
{
    std::int64_t steps = 0;
    std::int64_t bytes = 0;
    bool endless = false;
};

/// Reads the file as the program does, and writes all items where it may.
Work workOn(const QString& path, CheckedStream::Mode mode, const QByteArray& picture = QByteArray())
{
    CheckedStream stream(path.toStdString(), mode);
    Work work;
    try {
        const bool writing = mode == CheckedStream::Mode::ReadWrite;
        const audiocore::MediaFile media = audiocore::openMedia(stream);
        audiocore::TagEdits edits;
        for (auto& text : edits.texts)
            text = "7";
        edits.picture = TagLib::ByteVector(picture.constData(), unsigned(picture.size()));
        audiocore::TagContent content;
        if (media.format != AUDIO_FORMAT_UNKNOWN)
            content = audiocore::readTags(media);
        if (media.file && writing)
            audiocore::writeTags(media, edits, content);
    } catch (const audiocore::EndlessReading&) {
        work.endless = true;
    }
    work.steps = stream.steps();
    work.bytes = stream.bytes();
    return work;
}

/// What an atom may say of its size, right or wrong.
QByteArray anyAtom(QRandomGenerator& random, const QByteArray& name, const QByteArray& content)
{
    QByteArray right = Mp4::atom(name, content);
    switch (random.bounded(24)) {
    case 0:
        return Mp4::number(0) + right.mid(4);
    case 1:
        return Mp4::longAtom(name, content);
    case 2:
        return Mp4::number(quint32(random.bounded(9))) + right.mid(4);
    case 3:
        return Mp4::number(quint32(right.size() + random.bounded(200))) + right.mid(4);
    case 4:
        return Mp4::number(random.generate()) + right.mid(4);
    case 5:
        return Mp4::number(1) + name + Mp4::number64(random.generate64()) + content;
    default:
        return right;
    }
}

QByteArray anyAtoms(QRandomGenerator& random, int depth)
{
    static const char* const containers[] = {"moov", "trak", "mdia", "minf", "stbl",
                                             "udta", "meta", "ilst", "moof", "traf"};
    static const char* const leaves[] = {"stco", "co64", "tfhd", "covr", "\251nam", "----",
                                         "free", "gnre", "trkn", "hdlr", "mdhd"};
    QByteArray atoms;
    for (int count = random.bounded(6); count > 0 && atoms.size() < 3000; --count) {
        const bool inner = depth > 0 && random.bounded(2);
        const QByteArray name = inner ? containers[random.bounded(10)] : leaves[random.bounded(11)];
        atoms += anyAtom(random, name,
                         inner ? anyAtoms(random, depth - 1)
                               : Mp4::number(0) + Mp4::number(random.generate()) +
                                     QByteArray(random.bounded(60), char(random.bounded(256))));
    }
    return atoms;
}
} // namespace

/// MP4 files of all kinds: what is found, what is changed, and what no file may do.
class TestMp4 : public QObject
{
    Q_OBJECT

private slots:
    void theMusicIsFoundWhereItMoved_data();
    void theMusicIsFoundWhereItMoved();
    void oddShapesAreReadAndKept_data();
    void oddShapesAreReadAndKept();
    void deepNestsAreNoMusic_data();
    void deepNestsAreNoMusic();
    void asManyAtomsAsFitAreNoMusic();
    void whatCannotBeMovedIsNotSaved_data();
    void whatCannotBeMovedIsNotSaved();
    void hostileAtomsTakeFewSteps();
    void anEndlessTableTakesFewSteps_data();
    void anEndlessTableTakesFewSteps();
    void hugeItemsAreNotRead_data();
    void hugeItemsAreNotRead();
    void musicTakesASmallPartOfWhatItMay_data();
    void musicTakesASmallPartOfWhatItMay();

private:
    QString file(const QByteArray& content);

    QTemporaryDir m_folder;
    int m_files = 0;
};

QString TestMp4::file(const QByteArray& content)
{
    const QString path = m_folder.filePath(QStringLiteral("%1.m4a").arg(++m_files));
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
        qFatal("cannot write %s", qUtf8Printable(path));
    return path;
}

void TestMp4::theMusicIsFoundWhereItMoved_data()
{
    QTest::addColumn<QString>("path");
    const auto remuxed = [this](const char* name, const QStringList& how) {
        const QString path = m_folder.filePath(QString::fromLatin1(name) + QLatin1String(".m4a"));
        if (!ffmpeg(QStringList{QStringLiteral("-i"), Fixtures::tone(QStringLiteral("m4a")),
                                QStringLiteral("-c"), QStringLiteral("copy"), QStringLiteral("-movflags")} +
                    how + QStringList{path}))
            qFatal("ffmpeg cannot make %s", name);
        return path;
    };
    QTest::newRow("behind the music") << Fixtures::copyTone(QStringLiteral("m4a"), m_folder.path());
    const QString front = remuxed("front", {QStringLiteral("+faststart")});
    QTest::newRow("wide numbers") << file(withWideTable(contentOf(front)));
    QTest::newRow("in front of the music") << front;
    QTest::newRow("fragments") << remuxed(
        "fragments",
        {QStringLiteral("+empty_moov"), QStringLiteral("-frag_duration"), QStringLiteral("500000")});
}

void TestMp4::theMusicIsFoundWhereItMoved()
{
    QFETCH(QString, path);
    const QByteArray sound = soundOf(path);
    QVERIFY(!sound.isEmpty());
    const AudioFile::Properties before = AudioFile::properties(path);
    const QByteArray picture = Fixtures::jpeg(900, 900, 3);
    for (const QByteArray& wanted : {picture, Fixtures::jpeg(40, 40, 1), QByteArray(), picture}) {
        AudioFile::takeLog();
        QVERIFY2(AudioFile::write(path, {{TAG_TITLE, QStringLiteral("Tide")}}, &wanted) == 0,
                 qPrintable(AudioFile::takeLog().join(QLatin1Char('\n'))));
        QCOMPARE(AudioFile::read(path).picture, wanted);
        QCOMPARE(AudioFile::read(path).texts.value(TAG_TITLE), QStringLiteral("Tide"));
        QCOMPARE(soundOf(path), sound);
        QVERIFY(indexIsRight(contentOf(path)));
        QCOMPARE(AudioFile::properties(path).duration, before.duration);
    }
}

void TestMp4::oddShapesAreReadAndKept_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QByteArray>("kept");
    const QByteArray title = Mp4::item("\251nam", 1, "Old");
    const QByteArray other = Mp4::item("XYZW", 0, "kept as it is");
    const QByteArray track = Mp4::track(Mp4::table("stco", 0, QByteArray()));
    const QByteArray list = Mp4::atom("ilst", title + other);
    const QByteArray wide = Mp4::longAtom("udta", Mp4::longAtom("meta", Mp4::number(0) + list));
    QTest::newRow("plain") << Mp4::file(track + Mp4::tags(title + other)) << other;
    QTest::newRow("wide sizes") << Mp4::file(track + wide) << other;
    QTest::newRow("no version") << Mp4::file(track + Mp4::atom("udta", Mp4::atom("meta", list))) << other;
    const QByteArray ended = Mp4::atom("udta", Mp4::atom("meta", Mp4::number(0) + list) + Mp4::number(0));
    QTest::newRow("a zero ends the list") << Mp4::file(ended + track) << Mp4::number(0) + track;
    QTest::newRow("another one before")
        << Mp4::file(Mp4::atom("udta", Mp4::atom("name", "x")) + track + Mp4::tags(title + other)) << other;
    QTest::newRow("rubbish behind") << Mp4::file(track + Mp4::tags(title + other)) + "rubbish of no size"
                                    << other;
    QByteArray open = Mp4::file(QByteArray()).left(20) + Mp4::atom("mdat", QByteArray(100, 'm'));
    QTest::newRow("open to the end") << open.left(12 + 4) + Mp4::atom("mdat", QByteArray(100, 'm')) +
                                            Mp4::number(0) + "moov" + track + Mp4::tags(title + other)
                                     << other;
}

void TestMp4::oddShapesAreReadAndKept()
{
    QFETCH(QByteArray, content);
    QFETCH(QByteArray, kept);
    const QString path = file(content);
    QCOMPARE(AudioFile::read(path).texts.value(TAG_TITLE), QStringLiteral("Old"));
    QCOMPARE(AudioFile::properties(path).duration, 3000);
    QCOMPARE(AudioFile::properties(path).sampleRate, 44100);
    QCOMPARE(AudioFile::write(path, {{TAG_TITLE, QStringLiteral("New")}, {TAG_TRACK, QStringLiteral("4")}}),
             0);
    QCOMPARE(AudioFile::read(path).texts.value(TAG_TITLE), QStringLiteral("New"));
    QCOMPARE(AudioFile::read(path).texts.value(TAG_TRACK), QStringLiteral("4"));
    QVERIFY(contentOf(path).contains(kept));
}

void TestMp4::deepNestsAreNoMusic_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<int>("depth");
    for (const char* name : {"udta", "ilst", "trak", "stbl", "moov"})
        for (const int depth : {40, 60000})
            QTest::addRow("%s, %d deep", name, depth) << QByteArray(name) << depth;
}

void TestMp4::deepNestsAreNoMusic()
{
    QFETCH(QByteArray, name);
    QFETCH(int, depth);
    QByteArray nest;
    for (int level = depth; level > 0; --level)
        nest += Mp4::number(quint32(level) * 8) + name;
    const QByteArray content = Mp4::file(Mp4::track(Mp4::table("stco", 0, QByteArray())) + nest);
    const QString path = file(content);
    AudioFile::takeLog();
    QVERIFY(AudioFile::read(path).texts.isEmpty());
    QCOMPARE(AudioFile::properties(path).format, -1);
    QCOMPARE(AudioFile::takeLog().size(), 1);
    QVERIFY(AudioFile::write(path, {{TAG_TITLE, QStringLiteral("New")}}) != 0);
    QCOMPARE(contentOf(path), content);
}

void TestMp4::asManyAtomsAsFitAreNoMusic()
{
    const QByteArray track = Mp4::track(Mp4::table("stco", 0, QByteArray()));
    const QString path = file(Mp4::file(track + Mp4::atom("free", QByteArray()).repeated(4000000)));
    AudioFile::takeLog();
    QCOMPARE(AudioFile::properties(path).format, -1);
    QCOMPARE(AudioFile::takeLog().size(), 1);
    QVERIFY(workOn(path, CheckedStream::Mode::Read).steps <
            600000); // of two walks: our own, and whether decoders may
}

void TestMp4::whatCannotBeMovedIsNotSaved_data()
{
    QTest::addColumn<QByteArray>("content");
    const auto with = [](const QByteArray& table) {
        return Mp4::file(Mp4::tags(QByteArray()) + Mp4::track(table));
    };
    QTest::newRow("a table longer than its atom") << with(Mp4::table("stco", 1000, Mp4::number(2000)));
    QTest::newRow("a wide one") << with(Mp4::table("co64", 0xFFFFFFFF, Mp4::number64(2000)));
    QTest::newRow("places at the end of what numbers can say")
        << with(Mp4::table("stco", 1, Mp4::number(0xFFFFFFFF)));
    QByteArray outside = with(Mp4::table("stco", 0, QByteArray()));
    outside.replace(outside.indexOf("stbl") - 4, 4, Mp4::number(0x7FFFFFFF));
    QTest::newRow("an atom longer than what is around it") << outside;
}

void TestMp4::whatCannotBeMovedIsNotSaved()
{
    QFETCH(QByteArray, content);
    const QString path = file(content);
    const QByteArray picture = Fixtures::jpeg(300, 300, 1);
    AudioFile::takeLog();
    QVERIFY(AudioFile::write(path, {{TAG_TITLE, QStringLiteral("New")}}, &picture) != 0);
    QCOMPARE(AudioFile::takeLog().size(), 1);
    QCOMPARE(contentOf(path), content);
}

void TestMp4::hostileAtomsTakeFewSteps()
{
    QRandomGenerator random(7);
    const QByteArray picture = Fixtures::jpeg(100, 100, 1);
    for (int round = 0; round < 1500; ++round) {
        const QByteArray track =
            Mp4::track(Mp4::table("stco", random.generate() >> random.bounded(32), "entries"));
        const QString path = file(Mp4::file(anyAtoms(random, 6) + track + anyAtoms(random, 6)));
        const qint64 size = QFileInfo(path).size();
        for (const auto mode : {CheckedStream::Mode::Read, CheckedStream::Mode::ReadWrite}) {
            const Work work = workOn(path, mode, picture);
            QVERIFY2(!work.endless && work.steps < 200 + size, qPrintable(QString::number(work.steps)));
            QVERIFY2(work.bytes < 10 * size + 200000, qPrintable(QString::number(work.bytes)));
        }
        QFile::remove(path);
    }
}

void TestMp4::anEndlessTableTakesFewSteps_data()
{
    QTest::addColumn<QByteArray>("table");
    QTest::newRow("stco") << Mp4::table("stco", 0xFFFFFFFF, QByteArray(4000, '\1'));
    QTest::newRow("co64") << Mp4::table("co64", 0xFFFFFFFF, QByteArray(4000, '\1'));
    QTest::newRow("many") << Mp4::table("stco", 0x00FFFFFF, QByteArray(4, '\1')).repeated(200);
}

void TestMp4::anEndlessTableTakesFewSteps()
{
    QFETCH(QByteArray, table);
    const QString path = file(Mp4::file(Mp4::track(table)));
    QVERIFY(workOn(path, CheckedStream::Mode::Read).steps < 5000);
    const Work work = workOn(path, CheckedStream::Mode::ReadWrite, Fixtures::jpeg(100, 100, 1));
    QVERIFY2(work.steps < 5000, qPrintable(QString::number(work.steps)));
}

void TestMp4::hugeItemsAreNotRead_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<quint64>("size");
    for (const char* name : {"\251nam", "gnre", "trkn", "covr", "----"})
        for (const quint64 size : {quint64(33) << 20, quint64(3) << 30})
            QTest::addRow("%s, %llu bytes", name[0] == '\251' ? "a text" : name, size)
                << QByteArray(name) << size;
}

void TestMp4::hugeItemsAreNotRead()
{
    QFETCH(QByteArray, name);
    QFETCH(quint64, size);
    QByteArray content =
        Mp4::number(quint32(size) + 16) + "data" + Mp4::number(name == "covr" ? 13 : 1) + Mp4::number(0);
    for (const QByteArray& around : {name, QByteArray("ilst"), QByteArray("meta"), QByteArray("udta")}) {
        const QByteArray inside = (around == "meta" ? Mp4::number(0) : QByteArray()) + content;
        content = Mp4::number(1) + around + Mp4::number64(size + quint64(inside.size()) + 16) + inside;
    }
    const QByteArray track = Mp4::track(Mp4::table("stco", 0, QByteArray()));
    const QByteArray moov =
        Mp4::number(1) + "moov" + Mp4::number64(size + quint64((track + content).size()) + 16);
    const QString path = file(Mp4::atom("ftyp", "M4A " + Mp4::number(0)) + moov + track + content);
    QFile hole(path);
    QVERIFY(hole.open(QIODevice::ReadWrite));
    QVERIFY(hole.resize(hole.size() + qint64(size)));
    hole.close();
    QCOMPARE(AudioFile::properties(path).duration, 3000);
    QVERIFY(AudioFile::read(path).texts.isEmpty());
    QVERIFY(AudioFile::read(path).picture.isEmpty());
    const Work work = workOn(path, CheckedStream::Mode::Read);
    QVERIFY2(work.bytes < 300000 && work.steps < 200, qPrintable(QString::number(work.bytes)));
    QFile::remove(path);
}

void TestMp4::musicTakesASmallPartOfWhatItMay_data()
{
    QTest::addColumn<QString>("kind");
    for (const QString& kind : Fixtures::formats() + Fixtures::furtherKinds() + Fixtures::mp4Kinds())
        QTest::newRow(qPrintable(kind)) << kind;
}

/// The bound is for hostile files; real ones must stay far from it.
void TestMp4::musicTakesASmallPartOfWhatItMay()
{
    QFETCH(QString, kind);
    const QString path = Fixtures::copyTone(kind, m_folder.path());
    const QByteArray picture = Fixtures::jpeg(600, 600, 1);
    QCOMPARE(AudioFile::write(path, {{TAG_TITLE, QStringLiteral("Old")}}, &picture), 0);
    const qint64 size = QFileInfo(path).size();
    const Work reading = workOn(path, CheckedStream::Mode::Read);
    const Work writing = workOn(path, CheckedStream::Mode::ReadWrite, Fixtures::jpeg(900, 900, 1));
    qInfo("%s: %lld bytes, reading %lld steps %lld bytes, writing %lld steps %lld bytes", qPrintable(kind),
          size, qint64(reading.steps), qint64(reading.bytes), qint64(writing.steps), qint64(writing.bytes));
    QVERIFY(reading.steps < 2000 + size / 640);
    QVERIFY(reading.bytes < 2000000 + size);
    QVERIFY(writing.steps < 3000 + size / 160);
    QVERIFY(writing.bytes < 20000000 + size * 2);
}

QTEST_GUILESS_MAIN(TestMp4)
#include "tst_mp4.moc"
