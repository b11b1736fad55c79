#include "audiocore/tagitem.h"
#include "audiofile.h"
#include "fixtures.h"

#include <QCryptographicHash>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QtTest>

namespace {
struct Edit
{
    const char* field; ///< as judge.py calls it
    int type;
    const char* text;
    QStringList names; ///< ffmpeg's, in small letters
};

const QList<Edit>& edits()
{
    static const QList<Edit> all = {
        {"title", TAG_TITLE, "A title quite new", {"title"}},
        {"artist", TAG_ARTIST, "New singer", {"artist", "author"}},
        {"album", TAG_ALBUM, "New album", {"album"}},
        {"genre", TAG_GENRE, "Jazz", {"genre"}},
        {"year", TAG_YEAR, "1987", {"date", "year", "wm/year"}},
        {"track", TAG_TRACK, "7", {"track"}},
        {"picture", TAG_PICTURE, nullptr, {}},
    };
    return all;
}

enum Version { Untagged = 0, WithoutId3 = 1, Oldest = 2, Middle = 3, Newest = 4, Broken = 5 };

/// A song before any edit.
struct Song
{
    QString kind;
    int version;

    QString name() const
    {
        return kind + (version == Untagged     ? QStringLiteral(" untagged")
                       : version == WithoutId3 ? QString()
                       : version == Broken     ? QStringLiteral(" broken")
                                               : QStringLiteral(" 2.%1").arg(version));
    }
};

QList<Song> songs()
{
    QList<Song> all;
    for (const QString& kind : Fixtures::formats() + Fixtures::furtherKinds()) {
        all << Song{kind, Untagged};
        if (kind == QLatin1String("mp3") || kind == QLatin1String("aac"))
            all << Song{kind, Oldest} << Song{kind, Middle} << Song{kind, Newest} << Song{kind, Broken};
        else if (kind == QLatin1String("wav") || kind == QLatin1String("mp3novbr"))
            all << Song{kind, Middle} << Song{kind, Newest};
        else
            all << Song{kind, WithoutId3};
    }
    for (const QString& kind : Fixtures::mp4Kinds())
        all << Song{kind, WithoutId3};
    return all;
}

/// Small: ffmpeg gives up at values of WMA that are larger than 64 kB, which others read.
QByteArray newPicture()
{
    return Fixtures::jpeg(24, 24, 3);
}

QByteArray outputOf(const QString& program, const QStringList& arguments,
                    const QByteArray& input = QByteArray())
{
    QProcess process;
    process.start(program, arguments);
    process.write(input);
    process.closeWriteChannel();
    if (!process.waitForFinished(patience) || process.exitCode() != 0)
        qFatal("%s: %s", qUtf8Printable(program), process.readAllStandardError().right(2000).constData());
    return process.readAllStandardOutput();
}

QByteArray contentOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QByteArray askMutagen(const char* what, const QJsonObject& question)
{
    return outputOf(QStandardPaths::findExecutable(QStringLiteral("python3"), {QStringLiteral("/usr/bin")}),
                    {QStringLiteral("-c"), QString::fromUtf8(contentOf(QStringLiteral(":/judge.py"))),
                     QLatin1String(what)},
                    QJsonDocument(question).toJson());
}

void ffmpeg(const QStringList& arguments)
{
    outputOf(QStringLiteral("ffmpeg"),
             QStringList{QStringLiteral("-v"), QStringLiteral("error"), QStringLiteral("-y")} + arguments);
}

/// What ffmpeg takes for the name's ending holds AAC and ALAC alone.
QStringList muxerOf(const QString& kind)
{
    return Fixtures::mp4Kinds().contains(kind) ? QStringList{"-f", "mp4", "-strict", "-2"} : QStringList();
}

/// Chapters where the container has them, and the fields that ffmpeg writes.
void addChapters(const QString& path, const QString& folder, const QStringList& muxer)
{
    const QString fields = folder + QLatin1String("/chapters.txt");
    QFile file(fields);
    if (!file.open(QIODevice::WriteOnly) ||
        file.write(
            ";FFMETADATA1\ntitle=The old title\nartist=Singer\ncomment=A comment\ncopyright=Someone's\n"
            "[CHAPTER]\nTIMEBASE=1/1000\nSTART=0\nEND=400\ntitle=Opening\n"
            "[CHAPTER]\nTIMEBASE=1/1000\nSTART=400\nEND=900\ntitle=Finale\n") < 0)
        qFatal("cannot write %s", qUtf8Printable(fields));
    file.close();
    const QString tone = path + QLatin1String(".tone");
    QFile::rename(path, tone);
    ffmpeg(QStringList{"-i", tone, "-i", fields, "-map_metadata", "1", "-map_chapters", "1", "-c", "copy"} +
           muxer + QStringList{path});
}

/// What ffmpeg makes of a file.
struct Heard
{
    QByteArrayList fields; ///< with the chapters, in sections
    QByteArrayList sound;  ///< sums of what is decoded
    QByteArrayList pictures;
};

/// All at once: a program for each file would take many times as long.
void askFfmpeg(const QStringList& paths, const QString& folder, QHash<QString, Heard>& heard)
{
    const auto answer = [&folder](int number, const char* end) {
        return QStringLiteral("%1/%2.%3").arg(folder).arg(number).arg(QLatin1String(end));
    };
    const auto words = [](const char* text, int number) {
        return QString::fromLatin1(text).arg(number).split(QLatin1Char(' '));
    };
    QStringList inputs;
    QStringList outputs;
    for (int i = 0; i < paths.size(); ++i) {
        inputs << QStringLiteral("-i") << paths.at(i);
        outputs << words("-map %1:a -map %1:v? -c:v copy -f streamhash -hash md5", i) << answer(i, "sums");
        outputs << words(
                       "-map %1:a -c copy -map_metadata %1 -map_chapters %1 -fflags +bitexact -f ffmetadata",
                       i)
                << answer(i, "fields");
    }
    ffmpeg(inputs + outputs);
    for (int i = 0; i < paths.size(); ++i) {
        Heard& one = heard[paths.at(i)];
        one.fields = contentOf(answer(i, "fields")).split('\n');
        for (const QByteArray& line : contentOf(answer(i, "sums")).split('\n'))
            if (const QByteArray sum = line.mid(line.indexOf(',')); sum.startsWith(",v,"))
                one.pictures.append(sum);
            else if (!sum.isEmpty())
                one.sound.append(sum);
        std::sort(one.pictures.begin(), one.pictures.end());
    }
}

/// Of the fields those of these names, or all others with the chapters, whose titles have none of them.
/// Fields are in an order of their own, since ffmpeg keeps none.
QByteArrayList fieldsOf(const QByteArrayList& all, const QStringList& names, bool named)
{
    QByteArrayList fields;
    QByteArrayList chapters;
    bool inChapter = false;
    for (const QByteArray& line : all) {
        if (line.startsWith('['))
            inChapter = line == "[CHAPTER]";
        if (inChapter && !named)
            chapters.append(line);
        if (!inChapter && names.contains(QString::fromUtf8(line.left(line.indexOf('='))).toLower()) == named)
            fields.append(line);
    }
    std::sort(fields.begin(), fields.end());
    return fields + chapters;
}

/// What mutagen says, an entry a line: of the field, or of all others.
QStringList entries(const QJsonArray& reading, const char* field, bool ofField)
{
    QStringList lines;
    for (const QJsonValue entry : reading)
        if ((entry[1].toString() == QLatin1String(field)) == ofField)
            lines.append(entry[0].toString() + QLatin1Char(' ') + entry[2].toString() + QLatin1Char(' ') +
                         entry[3].toString());
    return lines;
}
} // namespace

/// One field of each song is edited, and two programs that others wrote are asked what became of all the
/// rest. What they cannot see of it stands in judge.py.
class TestJudges : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void theSongsHoldRareThings();
    void mutagenFindsTheRestUnchanged_data() { addEdits(); }
    void mutagenFindsTheRestUnchanged();
    void ffmpegFindsTheRestUnchanged_data() { addEdits(); }
    void ffmpegFindsTheRestUnchanged();

private:
    static void addEdits();
    QString pathOf(const Song& song, const char* edit) const;
    void makeSongs();
    void editSongs();

    QTemporaryDir m_folder;
    QJsonObject m_read;                    ///< by mutagen
    QHash<QString, Heard> m_heard;         ///< by ffmpeg
    QHash<QString, QStringList> m_refused; ///< what the log said
};

QString TestJudges::pathOf(const Song& song, const char* edit) const
{
    return m_folder.filePath(song.name().remove(' ') + '-' + edit + '.' + Fixtures::suffixOf(song.kind));
}

void TestJudges::makeSongs()
{
    constexpr int milliseconds = 1000;
    QJsonArray jobs;
    for (const Song& song : songs()) {
        const QString path = pathOf(song, "before");
        QVERIFY(QFile::copy(Fixtures::tone(song.kind, milliseconds), path));
        if (song.version == Untagged)
            continue;
        if ((QStringList{"m4a", "alac", "wma", "wav"} + Fixtures::mp4Kinds()).contains(song.kind))
            addChapters(path, m_folder.path(), muxerOf(song.kind));
        jobs.append(QJsonArray{path, song.version});
    }
    const auto text = [](const QByteArray& bytes) { return QString::fromLatin1(bytes.toBase64()); };
    askMutagen("fill", {{"songs", jobs},
                        {"back", text(Fixtures::jpeg(24, 24, 1))},
                        {"front", text(Fixtures::jpeg(24, 24, 2))}});
}

void TestJudges::editSongs()
{
    const QByteArray picture = newPicture();
    for (const Song& song : songs())
        for (const Edit& edit : edits()) {
            const QString path = pathOf(song, edit.field);
            QVERIFY(QFile::copy(pathOf(song, "before"), path));
            AudioFile::takeLog();
            const bool saved = edit.text
                                   ? AudioFile::write(path, {{edit.type, QLatin1String(edit.text)}}) == 0
                                   : AudioFile::write(path, {}, &picture) == 0;
            const QStringList log = AudioFile::takeLog();
            if (!saved || !log.isEmpty())
                m_refused.insert(path, log);
        }
}

void TestJudges::initTestCase()
{
    makeSongs();
    if (!QTest::currentTestFailed())
        editSongs();
    if (QTest::currentTestFailed())
        return;
    QStringList paths;
    for (const Song& song : songs()) {
        paths.append(pathOf(song, "before"));
        for (const Edit& edit : edits())
            paths.append(pathOf(song, edit.field));
    }
    m_read =
        QJsonDocument::fromJson(askMutagen("read", {{"songs", QJsonArray::fromStringList(paths)}})).object();
    constexpr int atOnce = 64;
    for (int i = 0; i < paths.size(); i += atOnce)
        askFfmpeg(paths.mid(i, atOnce), m_folder.path(), m_heard);
}

void TestJudges::addEdits()
{
    QTest::addColumn<QString>("kind");
    QTest::addColumn<int>("version");
    QTest::addColumn<int>("edit");
    for (const Song& song : songs())
        for (int edit = 0; edit < edits().size(); ++edit)
            QTest::addRow("%s %s", qPrintable(song.name()), edits().at(edit).field)
                << song.kind << song.version << edit;
}

void TestJudges::theSongsHoldRareThings()
{
    for (const Song& song : songs()) {
        const QString path = pathOf(song, "before");
        const QJsonArray reading = m_read.value(path).toArray();
        QVERIFY2(!m_heard.value(path).sound.isEmpty(), qPrintable(path));
        if (song.version == Untagged)
            continue;
        for (const Edit& edit : edits())
            QVERIFY2(!entries(reading, edit.field, true).isEmpty(), qPrintable(path + edit.field));
        QVERIFY2(entries(reading, "picture", true).size() >= 2, qPrintable(path));
        QVERIFY2(entries(reading, "", true).filter("nobody", Qt::CaseInsensitive).size() > 1,
                 qPrintable(path));
        const int chapters = m_heard.value(path).fields.count("[CHAPTER]");
        const bool hasChapters = song.kind != QLatin1String("ape") && song.version != Oldest;
        QVERIFY2(chapters == (hasChapters ? 2 : 0), qPrintable(path));
    }
}

void TestJudges::mutagenFindsTheRestUnchanged()
{
    QFETCH(QString, kind);
    QFETCH(int, version);
    QFETCH(int, edit);
    const Edit& wanted = edits().at(edit);
    const QString path = pathOf({kind, version}, wanted.field);
    QVERIFY2(!m_refused.contains(path), qPrintable(m_refused.value(path).join('\n')));
    const QJsonArray before = m_read.value(pathOf({kind, version}, "before")).toArray();
    const QJsonArray after = m_read.value(path).toArray();
    QCOMPARE(entries(after, wanted.field, false), entries(before, wanted.field, false));
    // Genres of ID3v1 are numbers.
    const QStringList edited = entries(after, wanted.field, true);
    const QString value =
        wanted.text
            ? QString::fromLatin1(wanted.text)
            : QString::fromLatin1(QCryptographicHash::hash(newPicture(), QCryptographicHash::Sha1).toHex());
    QVERIFY2(!edited.isEmpty(), qPrintable(path));
    for (const QString& entry : edited)
        QVERIFY2(entry.contains(value) || entry.startsWith("id3v1 TCON"), qPrintable(entry));
}

void TestJudges::ffmpegFindsTheRestUnchanged()
{
    QFETCH(QString, kind);
    QFETCH(int, version);
    QFETCH(int, edit);
    const Edit& wanted = edits().at(edit);
    const Heard before = m_heard.value(pathOf({kind, version}, "before"));
    const Heard after = m_heard.value(pathOf({kind, version}, wanted.field));
    QCOMPARE(after.sound, before.sound);
    QCOMPARE(fieldsOf(after.fields, wanted.names, false), fieldsOf(before.fields, wanted.names, false));
    if (!wanted.text) {
        QCOMPARE(after.pictures.size(), 1);
        return;
    }
    QCOMPARE(after.pictures, before.pictures);
    QVERIFY(fieldsOf(after.fields, wanted.names, true).join('\n').contains(wanted.text));
}

QTEST_GUILESS_MAIN(TestJudges)
#include "tst_judges.moc"
