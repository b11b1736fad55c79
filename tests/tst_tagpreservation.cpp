#include "audiocore/tagitem.h"
#include "audiofile.h"
#include "fixtures.h"
#include "songfixtures.h"
#include "songs/songediting.h"
#include "sound.h"
#include "startup.h"

#include <taglib/apefile.h>
#include <taglib/apetag.h>
#include <taglib/asffile.h>
#include <taglib/asftag.h>
#include <taglib/attachedpictureframe.h>
#include <taglib/chapterframe.h>
#include <taglib/flacfile.h>
#include <taglib/flacpicture.h>
#include <taglib/id3v2tag.h>
#include <taglib/mp4file.h>
#include <taglib/mp4tag.h>
#include <taglib/mpegfile.h>
#include <taglib/textidentificationframe.h>
#include <taglib/tpropertymap.h>
#include <taglib/vorbisfile.h>
#include <taglib/wavfile.h>
#include <taglib/xiphcomment.h>

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

using TagLib::ByteVector;

namespace {
const char* const title = "The old title";

QByteArray contentOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QByteArray outputOf(const QString& program, const QStringList& arguments)
{
    QProcess process;
    process.start(program, arguments);
    return process.waitForFinished(patience) && process.exitCode() == 0 ? process.readAllStandardOutput()
                                                                        : QByteArray();
}

TagLib::PropertyMap rareFields(const QString& kind)
{
    TagLib::PropertyMap rare;
    rare["TITLE"] = TagLib::StringList(title);
    rare["ARTIST"] = TagLib::StringList("First singer").append("Second singer");
    rare["ALBUM"] = TagLib::StringList("The album");
    rare["GENRE"] = TagLib::StringList("Rock");
    rare["DATE"] = TagLib::StringList("2012-03-15");
    rare["TRACKNUMBER"] = TagLib::StringList("3/12");
    rare["COMPOSER"] = TagLib::StringList("The composer");
    rare["REPLAYGAIN_TRACK_GAIN"] = TagLib::StringList("-6.50 dB");
    rare["LYRICS"] = TagLib::StringList("La la la");
    rare["MOOD"] = TagLib::StringList("Calm");
    if (kind == QLatin1String("flac") || kind == QLatin1String("ogg")) {
        rare["CHAPTER001"] = TagLib::StringList("00:00:00.000");
        rare["CHAPTER001NAME"] = TagLib::StringList("Opening");
        rare["CHAPTER002"] = TagLib::StringList("00:00:01.000");
        rare["CHAPTER002NAME"] = TagLib::StringList("Finale");
    }
    return rare;
}

ByteVector bytesOf(const QByteArray& bytes)
{
    return ByteVector(bytes.constData(), unsigned(bytes.size()));
}

const QByteArray& front()
{
    static const QByteArray bytes = Fixtures::jpeg(60, 60, 1);
    return bytes;
}

const QByteArray& back()
{
    static const QByteArray bytes = Fixtures::jpeg(60, 60, 2);
    return bytes;
}

constexpr int frontType = 3;
constexpr int backType = 4;

template <class Picture>
Picture* picture(const QByteArray& bytes, int type)
{
    auto* made = new Picture;
    made->setType(typename Picture::Type(type));
    made->setMimeType("image/jpeg");
    if constexpr (std::is_same_v<Picture, TagLib::FLAC::Picture>)
        made->setData(bytesOf(bytes));
    else
        made->setPicture(bytesOf(bytes));
    return made;
}

void addChapter(TagLib::ID3v2::Tag& tag, const char* id, unsigned int begin, unsigned int end)
{
    auto* name = new TagLib::ID3v2::TextIdentificationFrame("TIT2", TagLib::String::Latin1);
    name->setText(id);
    TagLib::ID3v2::FrameList names;
    names.append(name);
    tag.addFrame(new TagLib::ID3v2::ChapterFrame(id, begin, end, 0xFFFFFFFF, 0xFFFFFFFF, names));
}

void addToId3v2(TagLib::ID3v2::Tag& tag)
{
    using Frame = TagLib::ID3v2::AttachedPictureFrame;
    tag.addFrame(picture<Frame>(front(), frontType));
    tag.addFrame(picture<Frame>(back(), backType));
    addChapter(tag, "Opening", 0, 1000);
    addChapter(tag, "Finale", 1000, 2500);
}

ByteVector apePicture(const QByteArray& bytes)
{
    ByteVector data("cover.jpg");
    data.append('\0');
    return data.append(bytesOf(bytes));
}

/// The tone with chapters, by the ffmpeg command.
QString toneWithChapters(const QString& kind, const QString& folder)
{
    const QString path = Fixtures::copyTone(kind, folder);
    if (kind != QLatin1String("m4a") && kind != QLatin1String("wma"))
        return path; // those that have chapters have them in the tag
    const QString chapters =
        Fixtures::saveBytes(";FFMETADATA1\n[CHAPTER]\nTIMEBASE=1/1000\nSTART=0\nEND=1000\ntitle=Opening\n"
                            "[CHAPTER]\nTIMEBASE=1/1000\nSTART=1000\nEND=2500\ntitle=Finale\n",
                            folder + QLatin1String("/chapters.txt"));
    outputOf(QStringLiteral("ffmpeg"),
             {QStringLiteral("-v"), QStringLiteral("error"), QStringLiteral("-y"), QStringLiteral("-i"),
              Fixtures::tone(kind), QStringLiteral("-i"), chapters, QStringLiteral("-map_chapters"),
              QStringLiteral("1"), QStringLiteral("-c"), QStringLiteral("copy"), path});
    return path;
}

/// Whatever of the rare things the format can hold.
QString rareSong(const QString& kind, const QString& folder)
{
    const QString path = toneWithChapters(kind, folder);
    const std::string name = QFile::encodeName(path).toStdString();
    bool saved = false;
    const auto fill = [&](auto& file, auto addPictures) {
        file.setProperties(rareFields(kind));
        addPictures(file);
        saved = file.save();
    };
    if (kind == QLatin1String("mp3") || kind == QLatin1String("aac")) {
        TagLib::MPEG::File file(name.c_str());
        fill(file, [](TagLib::MPEG::File& mpeg) { addToId3v2(*mpeg.ID3v2Tag(true)); });
    } else if (kind == QLatin1String("wav")) {
        TagLib::RIFF::WAV::File file(name.c_str());
        fill(file, [](TagLib::RIFF::WAV::File& wav) { addToId3v2(*wav.ID3v2Tag()); });
    } else if (kind == QLatin1String("flac")) {
        TagLib::FLAC::File file(name.c_str());
        fill(file, [](TagLib::FLAC::File& flac) {
            flac.addPicture(picture<TagLib::FLAC::Picture>(front(), frontType));
            flac.addPicture(picture<TagLib::FLAC::Picture>(back(), backType));
        });
    } else if (kind == QLatin1String("ogg")) {
        TagLib::Ogg::Vorbis::File file(name.c_str());
        fill(file, [](TagLib::Ogg::Vorbis::File& ogg) {
            ogg.tag()->addPicture(picture<TagLib::FLAC::Picture>(front(), frontType));
            ogg.tag()->addPicture(picture<TagLib::FLAC::Picture>(back(), backType));
        });
    } else if (kind == QLatin1String("m4a")) {
        TagLib::MP4::File file(name.c_str());
        fill(file, [](TagLib::MP4::File& mp4) {
            TagLib::MP4::CoverArtList covers;
            covers.append({TagLib::MP4::CoverArt::JPEG, bytesOf(front())});
            covers.append({TagLib::MP4::CoverArt::JPEG, bytesOf(back())});
            mp4.tag()->setItem("covr", covers);
            mp4.tag()->setItem("----:com.apple.iTunes:replaygain_track_gain", TagLib::StringList("-6.50 dB"));
        });
    } else if (kind == QLatin1String("ape")) {
        TagLib::APE::File file(name.c_str());
        fill(file, [](TagLib::APE::File& ape) {
            ape.APETag(true)->setData("COVER ART (FRONT)", apePicture(front()));
            ape.APETag(true)->setData("COVER ART (BACK)", apePicture(back()));
        });
    } else {
        TagLib::ASF::File file(name.c_str());
        fill(file, [](TagLib::ASF::File& asf) {
            asf.tag()->setAttribute("REPLAYGAIN_TRACK_GAIN", TagLib::String("-6.50 dB"));
            for (const auto& [bytes, type] : {std::pair(front(), frontType), std::pair(back(), backType)}) {
                TagLib::ASF::Picture made;
                made.setType(TagLib::ASF::Picture::Type(type));
                made.setMimeType("image/jpeg");
                made.setPicture(bytesOf(bytes));
                asf.tag()->addAttribute("WM/Picture", made);
            }
        });
    }
    return saved ? path : QString();
}

bool isPicture(const QJsonObject& stream)
{
    return stream.value(QLatin1String("codec_type")).toString() == QLatin1String("video");
}

/// What ffprobe tells of the file, the title, the pictures and what follows from the file's size left out.
QJsonObject independentReading(const QString& path)
{
    QJsonObject answer =
        QJsonDocument::fromJson(
            outputOf(QStringLiteral("ffprobe"),
                     {QStringLiteral("-v"), QStringLiteral("error"), QStringLiteral("-show_format"),
                      QStringLiteral("-show_streams"), QStringLiteral("-show_chapters"),
                      QStringLiteral("-show_data_hash"), QStringLiteral("md5"), QStringLiteral("-of"),
                      QStringLiteral("json"), path}))
            .object();
    const auto withoutTitle = [&path](QJsonObject part) {
        QJsonObject tags = part.value(QLatin1String("tags")).toObject();
        for (const char* name : {"title", "TITLE"})
            tags.remove(QLatin1String(name));
        part.insert(QStringLiteral("tags"), tags);
        part.remove(QStringLiteral("size"));
        part.remove(QStringLiteral("bit_rate"));
        part.remove(QStringLiteral("nb_streams"));
        part.remove(QStringLiteral("probe_score"));
        part.remove(QStringLiteral("index"));
        part.remove(QStringLiteral("start_time")); // rounded otherwise where there is a picture
        // Guessed there from the file's size.
        if (path.endsWith(QLatin1String(".aac")) || path.endsWith(QLatin1String(".wma")))
            for (const char* name : {"duration", "duration_ts"})
                part.remove(QLatin1String(name));
        return part;
    };
    answer.insert(QStringLiteral("format"), withoutTitle(answer.value(QLatin1String("format")).toObject()));
    QJsonArray streams;
    for (const QJsonValue value : answer.value(QLatin1String("streams")).toArray())
        if (!isPicture(value.toObject()))
            streams.append(withoutTitle(value.toObject()));
    answer.insert(QStringLiteral("streams"), streams);
    QJsonArray chapters;
    for (const QJsonValue value : answer.value(QLatin1String("chapters")).toArray()) {
        QJsonObject chapter = value.toObject();
        if (path.endsWith(QLatin1String(".wma"))) // the last one's is the song's, see above
            for (const char* name : {"end", "end_time"})
                chapter.remove(QLatin1String(name));
        chapters.append(chapter);
    }
    answer.insert(QStringLiteral("chapters"), chapters);
    return answer;
}

/// Checksums of the pictures, in an order of their own.
QByteArrayList picturesOf(const QString& path)
{
    const QByteArray answer =
        outputOf(QStringLiteral("ffmpeg"),
                 {QStringLiteral("-v"), QStringLiteral("error"), QStringLiteral("-i"), path,
                  QStringLiteral("-map"), QStringLiteral("0:v"), QStringLiteral("-c"), QStringLiteral("copy"),
                  QStringLiteral("-f"), QStringLiteral("streamhash"), QStringLiteral("-")});
    const QByteArray mark(",v,");
    QByteArrayList sums;
    for (const QByteArray& line : answer.split('\n'))
        if (line.contains(mark))
            sums.append(line.mid(line.indexOf(mark)));
    std::sort(sums.begin(), sums.end());
    return sums;
}

QString chapterTitles(const QJsonObject& reading)
{
    QStringList titles;
    for (const QJsonValue chapter : reading.value(QLatin1String("chapters")).toArray())
        titles.append(chapter.toObject()
                          .value(QLatin1String("tags"))
                          .toObject()
                          .value(QLatin1String("title"))
                          .toString());
    return titles.join(QLatin1Char(' '));
}

/// The rare values that are in the file's bytes in any of the encodings that tags have.
QStringList rawValues(const QByteArray& content)
{
    QStringList found;
    for (const char* value : {"First singer", "Second singer", "The album", "2012-03-15", "3/12",
                              "The composer", "-6.50 dB", "La la la", "Calm"}) {
        const QString text = QString::fromLatin1(value);
        const QByteArray wide(reinterpret_cast<const char*>(text.utf16()), text.size() * 2);
        if (content.contains(value) || content.contains(wide))
            found.append(text);
    }
    return found;
}

QStringList valuesThatFit(const QString& kind)
{
    QStringList values{"First singer", "Second singer", "The album", "2012-03-15", "3/12",
                       "The composer", "-6.50 dB",      "La la la",  "Calm"};
    if (kind == QLatin1String("m4a"))
        values.removeOne(QStringLiteral("3/12")); // two numbers there
    return values;
}

QString chaptersThatFit(const QString& kind)
{
    return kind == QLatin1String("ape") ? QString() : QStringLiteral("Opening Finale");
}

QString errorOfDifference(const QJsonObject& one, const QJsonObject& other)
{
    if (one == other)
        return QString();
    QStringList lines;
    const QList<QByteArray> before = QJsonDocument(one).toJson().split('\n');
    const QList<QByteArray> after = QJsonDocument(other).toJson().split('\n');
    for (const QByteArray& line : before)
        if (!after.contains(line))
            lines.append(QLatin1String("- ") + QString::fromUtf8(line));
    for (const QByteArray& line : after)
        if (!before.contains(line))
            lines.append(QLatin1String("+ ") + QString::fromUtf8(line));
    return lines.join(QLatin1Char('\n'));
}
} // namespace

/// An edit of the title, and everything else by readers that are not ours.
class TestTagPreservation : public QObject
{
    Q_OBJECT

public:
    static void initMain() { Startup::beforeApplication(); }

private slots:
    void initTestCase();
    void anAppliedTitleKeepsEverythingButThePictures_data() { addFormats(); }
    void anAppliedTitleKeepsEverythingButThePictures();
    void aWrittenTitleKeepsThePictures_data() { addFormats(); }
    void aWrittenTitleKeepsThePictures();

private:
    static void addFormats();

    QTemporaryDir m_folder;
    Fixtures::ModeGuard m_mode{true};
};

void TestTagPreservation::initTestCase()
{
    Startup::afterApplication();
    Fixtures::genericCover();
}

void TestTagPreservation::addFormats()
{
    QTest::addColumn<QString>("kind");
    for (const QString& kind : Fixtures::formats())
        QTest::newRow(qPrintable(kind)) << kind;
}

/// As the panel does it: the six texts go through the editors, and no cover is chosen.
void TestTagPreservation::anAppliedTitleKeepsEverythingButThePictures()
{
    QFETCH(QString, kind);
    const QString path = rareSong(kind, m_folder.path());
    const QByteArray content = contentOf(path);
    const QJsonObject before = independentReading(path);
    const QByteArray sound = Sound::sumOf(path);
    QCOMPARE(rawValues(content).join(", "), valuesThatFit(kind).join(", "));
    QVERIFY(content.contains(front()) || kind == QLatin1String("ogg"));
    QCOMPARE(chapterTitles(before), chaptersThatFit(kind));
    QVERIFY(!sound.isEmpty());

    const QHash<int, QString> texts = AudioFile::read(path).texts;
    QMusicInfo song;
    song.localInfo = std::make_unique<LocalMusicInfo>();
    song.localInfo->filePath = path;
    SongEdit edit;
    edit.title = QStringLiteral("Ein völlig neuer und längerer Titel");
    edit.artist = texts.value(TAG_ARTIST);
    edit.album = texts.value(TAG_ALBUM);
    edit.genre = texts.value(TAG_GENRE);
    edit.year = texts.value(TAG_YEAR).toInt();
    edit.trackNumber = texts.value(TAG_TRACK).toInt();
    SongEditing::apply(song, edit);

    QCOMPARE(AudioFile::read(path).texts.value(TAG_TITLE), edit.title);
    const QString difference = errorOfDifference(before, independentReading(path));
    QVERIFY2(difference.isEmpty(), qPrintable(difference));
    QCOMPARE(rawValues(contentOf(path)), valuesThatFit(kind));
    QCOMPARE(Sound::sumOf(path), sound);
    QVERIFY(AudioFile::read(path).picture.isEmpty());
    QVERIFY(picturesOf(path).isEmpty());
}

void TestTagPreservation::aWrittenTitleKeepsThePictures()
{
    QFETCH(QString, kind);
    const QString path = rareSong(kind, m_folder.path());
    const QJsonObject before = independentReading(path);
    const QByteArrayList pictures = picturesOf(path);
    QCOMPARE(pictures.size(), 2);
    QCOMPARE(AudioFile::write(path, {{TAG_TITLE, QStringLiteral("Another title")}}), 0);
    QCOMPARE(picturesOf(path), pictures);
    const QString difference = errorOfDifference(before, independentReading(path));
    QVERIFY2(difference.isEmpty(), qPrintable(difference));
}

QTEST_MAIN(TestTagPreservation)
#include "tst_tagpreservation.moc"
