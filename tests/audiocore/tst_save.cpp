#include "audiocore/iaudiotag.h"
#include "audiofile.h"
#include "fixtures.h"
#include "sanitized.h"
#include "sound.h"

#include <taglib/apefile.h>
#include <taglib/apetag.h>
#include <taglib/asffile.h>
#include <taglib/attachedpictureframe.h>
#include <taglib/chapterframe.h>
#include <taglib/fileref.h>
#include <taglib/flacfile.h>
#include <taglib/id3v1tag.h>
#include <taglib/id3v2header.h>
#include <taglib/id3v2tag.h>
#include <taglib/mp4file.h>
#include <taglib/mpegfile.h>
#include <taglib/tpropertymap.h>
#include <taglib/unsynchronizedlyricsframe.h>
#include <taglib/vorbisfile.h>
#include <taglib/wavfile.h>
#include <taglib/xiphcomment.h>

#include <QDir>
#include <QProcess>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QtTest>

#include <csignal>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <sys/xattr.h>
#include <unistd.h>

using TagLib::PropertyMap;
using TagLib::StringList;

namespace {
QByteArray contentOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

std::string native(const QString& path)
{
    return QFile::encodeName(path).toStdString();
}

/// The file through the class of its kind, since raw AAC has none of its own.
std::unique_ptr<TagLib::File> tagLibFile(const QString& path)
{
    if (path.endsWith(QLatin1String(".aac")))
        return std::make_unique<TagLib::MPEG::File>(native(path).c_str(), false);
    TagLib::FileRef ref(native(path).c_str());
    if (path.endsWith(QLatin1String(".mp3")))
        return std::make_unique<TagLib::MPEG::File>(native(path).c_str());
    if (path.endsWith(QLatin1String(".m4a")))
        return std::make_unique<TagLib::MP4::File>(native(path).c_str());
    if (path.endsWith(QLatin1String(".flac")))
        return std::make_unique<TagLib::FLAC::File>(native(path).c_str());
    if (path.endsWith(QLatin1String(".ogg")))
        return std::make_unique<TagLib::Ogg::Vorbis::File>(native(path).c_str());
    if (path.endsWith(QLatin1String(".wma")))
        return std::make_unique<TagLib::ASF::File>(native(path).c_str());
    if (path.endsWith(QLatin1String(".wav")))
        return std::make_unique<TagLib::RIFF::WAV::File>(native(path).c_str());
    return std::make_unique<TagLib::APE::File>(native(path).c_str());
}

PropertyMap rareFields()
{
    PropertyMap rare;
    rare["ARTIST"] = StringList("One").append("Two");
    rare["DATE"] = StringList("2012-03-15");
    rare["TRACKNUMBER"] = StringList("3/12");
    rare["COMPOSER"] = StringList("Composer");
    rare["REPLAYGAIN_TRACK_GAIN"] = StringList("-6.50 dB");
    rare["LYRICS"] = StringList("La la la");
    rare["MOOD"] = StringList("Calm");
    return rare;
}

QStringList leftovers(const QString& folder)
{
    return QDir(folder).entryList({QStringLiteral(".melodrift*")}, QDir::Files | QDir::Hidden);
}
} // namespace

class TestSave : public QObject
{
    Q_OBJECT

private slots:
    void anEditKeepsEverythingElse_data();
    void anEditKeepsEverythingElse();
    void chaptersAndFurtherFramesOfMp3Stay();
    void textsHandedBackUnchangedWriteNothing();
    void absentNumbersStayAbsent();
    void theVersionOfTheTagStays_data();
    void theVersionOfTheTagStays();
    void framesOfTheNewerVersionAreNotLost();
    void everyTagOfTheFileIsKeptInStep();
    void theTotalOfTracksStays();
    void anEmptyPictureTakesThePicturesOut();
    void anIndependentReaderAgrees_data();
    void anIndependentReaderAgrees();
    void modeAndAttributesStay();
    void aLinkStaysALink();
    void otherNamesKeepTheOldTags();
    void readOnlyPlacesAreLeftAlone();
    void aFileThatIsGoneIsNotMade();
    void aFullDiskLeavesTheOldFile();
    void aKillLeavesTheOldOrTheNewFile();

private:
    QTemporaryDir m_folder;
};

static void addFormats()
{
    QTest::addColumn<QString>("kind");
    for (const QString& kind : Fixtures::formats())
        QTest::newRow(qPrintable(kind)) << kind;
}

void TestSave::anEditKeepsEverythingElse_data()
{
    addFormats();
}

void TestSave::anEditKeepsEverythingElse()
{
    QFETCH(QString, kind);
    const QString path = Fixtures::copyTone(kind, m_folder.path());
    {
        const auto file = tagLibFile(path);
        file->setProperties(rareFields());
        QVERIFY(file->save());
    }
    const QByteArray sound = Sound::sumOf(path);
    const PropertyMap before = tagLibFile(path)->properties();
    // As an apply does: every text is handed over, one is new.
    QHash<int, QString> texts = AudioFile::read(path).texts;
    texts.insert(TAG_TITLE, QStringLiteral("New title"));
    QCOMPARE(AudioFile::write(path, texts), 0);
    const PropertyMap after = tagLibFile(path)->properties();
    QCOMPARE(QString::fromStdString(after["TITLE"].toString().to8Bit(true)), QStringLiteral("New title"));
    for (const auto& [key, values] : before)
        if (key != "TITLE")
            QVERIFY2(after[key] == values, key.toCString());
    QVERIFY(!sound.isEmpty());
    QCOMPARE(Sound::sumOf(path), sound);
}

void TestSave::chaptersAndFurtherFramesOfMp3Stay()
{
    const QString path = Fixtures::copyTone(QStringLiteral("mp3"), m_folder.path());
    {
        TagLib::MPEG::File file(native(path).c_str());
        auto* tag = file.ID3v2Tag(true);
        tag->addFrame(new TagLib::ID3v2::ChapterFrame(TagLib::ByteVector("c1"), 0, 1000, 0, 0));
        auto* lyrics = new TagLib::ID3v2::UnsynchronizedLyricsFrame;
        lyrics->setText("Long lyrics");
        tag->addFrame(lyrics);
        QVERIFY(file.save());
    }
    QCOMPARE(AudioFile::write(path, {{TAG_TITLE, QStringLiteral("T")}}), 0);
    TagLib::MPEG::File file(native(path).c_str());
    QCOMPARE(file.ID3v2Tag()->frameList("CHAP").size(), 1u);
    QCOMPARE(file.ID3v2Tag()->frameList("USLT").size(), 1u);
}

void TestSave::textsHandedBackUnchangedWriteNothing()
{
    for (const QString& kind : Fixtures::formats()) {
        const QString path = Fixtures::copyTone(kind, m_folder.path());
        {
            const auto file = tagLibFile(path);
            file->setProperties(rareFields());
            QVERIFY(file->save());
        }
        const QByteArray before = contentOf(path);
        QCOMPARE(AudioFile::write(path, AudioFile::read(path).texts), 0);
        QCOMPARE(contentOf(path), before);
    }
}

void TestSave::absentNumbersStayAbsent()
{
    // "0" stands for no year and no track.
    const QString path = Fixtures::copyTone(QStringLiteral("flac"), m_folder.path());
    QCOMPARE(AudioFile::write(path, {{TAG_TITLE, QStringLiteral("T")},
                                     {TAG_YEAR, QStringLiteral("0")},
                                     {TAG_TRACK, QStringLiteral("0")}}),
             0);
    const PropertyMap properties = tagLibFile(path)->properties();
    QVERIFY(!properties.contains("DATE"));
    QVERIFY(!properties.contains("TRACKNUMBER"));
}

void TestSave::theVersionOfTheTagStays_data()
{
    QTest::addColumn<int>("version");
    QTest::newRow("2.3") << 3;
    QTest::newRow("2.4") << 4;
}

void TestSave::theVersionOfTheTagStays()
{
    QFETCH(int, version);
    const QString path = Fixtures::copyTone(QStringLiteral("mp3"), m_folder.path());
    {
        TagLib::MPEG::File file(native(path).c_str());
        file.ID3v2Tag(true)->setTitle("Old");
        QVERIFY(file.save(TagLib::MPEG::File::ID3v2, TagLib::File::StripOthers,
                          version == 3 ? TagLib::ID3v2::v3 : TagLib::ID3v2::v4));
    }
    QCOMPARE(AudioFile::write(path, {{TAG_TITLE, QStringLiteral("夜")}}), 0);
    TagLib::MPEG::File file(native(path).c_str());
    QCOMPARE(int(file.ID3v2Tag()->header()->majorVersion()), version);
    QVERIFY(!file.hasID3v1Tag());
    QVERIFY(!file.hasAPETag());
}

void TestSave::framesOfTheNewerVersionAreNotLost()
{
    // Programs put them into tags of the older version, too.
    const QString path = Fixtures::copyTone(QStringLiteral("mp3"), m_folder.path());
    const QByteArray mood = QByteArray("TMOO\0\0\0\5\0\0\0Calm", 15);
    const QByteArray title = QByteArray("TIT2\0\0\0\4\0\0\0Old", 14);
    const QByteArray tag = QByteArray("ID3\3\0\0\0\0\0", 9) + char(mood.size() + title.size()) + title + mood;
    const QByteArray audio = contentOf(path);
    {
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(tag + audio);
    }
    QCOMPARE(AudioFile::write(path, {{TAG_TITLE, QStringLiteral("New")}}), 0);
    TagLib::MPEG::File file(native(path).c_str());
    QCOMPARE(file.ID3v2Tag()->frameList("TMOO").size(), 1u);
    QCOMPARE(file.ID3v2Tag()->title().toCString(), "New");
}

void TestSave::everyTagOfTheFileIsKeptInStep()
{
    const QString path = Fixtures::copyTone(QStringLiteral("mp3"), m_folder.path());
    {
        TagLib::MPEG::File file(native(path).c_str());
        file.ID3v2Tag(true)->setTitle("Old");
        file.ID3v1Tag(true)->setTitle("Old");
        file.APETag(true)->setTitle("Old");
        QVERIFY(file.save());
    }
    QCOMPARE(AudioFile::write(path, {{TAG_TITLE, QStringLiteral("New")}}), 0);
    TagLib::MPEG::File file(native(path).c_str());
    QCOMPARE(file.ID3v2Tag()->title().toCString(), "New");
    QCOMPARE(file.ID3v1Tag()->title().toCString(), "New");
    QCOMPARE(file.APETag()->title().toCString(), "New");
}

void TestSave::theTotalOfTracksStays()
{
    for (const QString& kind : Fixtures::formats()) {
        const QString path = Fixtures::copyTone(kind, m_folder.path());
        {
            const auto file = tagLibFile(path);
            file->setProperties(rareFields());
            QVERIFY(file->save());
        }
        QCOMPARE(AudioFile::write(path, {{TAG_TRACK, QStringLiteral("5")}}), 0);
        QCOMPARE(
            QString::fromStdString(tagLibFile(path)->properties()["TRACKNUMBER"].toString().to8Bit(true)),
            QStringLiteral("5/12"));
    }
}

void TestSave::anEmptyPictureTakesThePicturesOut()
{
    const QByteArray cover = Fixtures::jpeg(100, 100, 1);
    const QByteArray none;
    for (const QString& kind : Fixtures::formats() + Fixtures::furtherKinds()) {
        const QString path = Fixtures::copyTone(kind, m_folder.path());
        QCOMPARE(AudioFile::write(path, {{TAG_TITLE, QStringLiteral("T")}}, &cover), 0);
        QCOMPARE(AudioFile::read(path).picture, cover);
        QCOMPARE(AudioFile::write(path, {}, &none), 0);
        QVERIFY(AudioFile::read(path).picture.isEmpty());
        QCOMPARE(AudioFile::read(path).texts.value(TAG_TITLE), QStringLiteral("T"));
    }
}

void TestSave::anIndependentReaderAgrees_data()
{
    addFormats();
}

void TestSave::anIndependentReaderAgrees()
{
    QFETCH(QString, kind);
    const QString path = Fixtures::copyTone(kind, m_folder.path());
    const QByteArray cover = Fixtures::jpeg(100, 100, 1);
    QCOMPARE(AudioFile::write(path,
                              {{TAG_TITLE, QStringLiteral("Nächte")},
                               {TAG_ARTIST, QStringLiteral("Ida")},
                               {TAG_ALBUM, QStringLiteral("Tide")},
                               {TAG_GENRE, QStringLiteral("Rock")},
                               {TAG_YEAR, QStringLiteral("2012")},
                               {TAG_TRACK, QStringLiteral("3")}},
                              &cover),
             0);
    QProcess ffprobe;
    ffprobe.start(QStringLiteral("ffprobe"),
                  {QStringLiteral("-v"), QStringLiteral("error"), QStringLiteral("-show_entries"),
                   QStringLiteral("format_tags:stream_tags:stream=codec_type"), QStringLiteral("-of"),
                   QStringLiteral("flat"), path});
    QVERIFY(ffprobe.waitForFinished(patience));
    const QString answer = QString::fromUtf8(ffprobe.readAllStandardOutput()).toLower();
    for (const char* text : {"nächte", "ida", "tide", "rock", "2012"})
        QVERIFY2(answer.contains(QString::fromUtf8(text)), qPrintable(answer));
    QVERIFY2(answer.contains(QRegularExpression(QStringLiteral("track=\"3"))), qPrintable(answer));
    QVERIFY2(answer.contains(QLatin1String("\"video\"")), qPrintable(answer)); // the cover
    qInfo("%-5s title artist album genre year track cover: ours and ffprobe's reading agree",
          qPrintable(kind));
}

void TestSave::modeAndAttributesStay()
{
    const QString path = Fixtures::copyTone(QStringLiteral("mp3"), m_folder.path());
    const std::string file = native(path);
    QCOMPARE(::chmod(file.c_str(), 0640), 0);
    const bool attributes = ::setxattr(file.c_str(), "user.melodrift", "kept", 4, 0) == 0 &&
                            ::setxattr(file.c_str(), "user.empty", "", 0, 0) == 0;
    QCOMPARE(AudioFile::write(path, {{TAG_TITLE, QStringLiteral("T")}}), 0);
    struct stat status = {};
    QCOMPARE(::stat(file.c_str(), &status), 0);
    QCOMPARE(int(status.st_mode & 07777), 0640);
    char value[8] = {};
    if (attributes) {
        QCOMPARE(int(::getxattr(file.c_str(), "user.melodrift", value, sizeof value)), 4);
        QCOMPARE(int(::getxattr(file.c_str(), "user.empty", value, sizeof value)), 0);
    }
    QVERIFY(leftovers(m_folder.path()).isEmpty());
}

void TestSave::aLinkStaysALink()
{
    const QString path = Fixtures::copyTone(QStringLiteral("mp3"), m_folder.path(), QStringLiteral("target"));
    const QString link = m_folder.filePath(QStringLiteral("link.mp3"));
    QVERIFY(QFile::link(path, link));
    QCOMPARE(AudioFile::write(link, {{TAG_TITLE, QStringLiteral("Through the link")}}), 0);
    QVERIFY(QFileInfo(link).isSymLink());
    QCOMPARE(AudioFile::read(path).texts.value(TAG_TITLE), QStringLiteral("Through the link"));
}

void TestSave::otherNamesKeepTheOldTags()
{
    const QString path = Fixtures::copyTone(QStringLiteral("mp3"), m_folder.path(), QStringLiteral("one"));
    const QString other = m_folder.filePath(QStringLiteral("other.mp3"));
    QCOMPARE(::link(native(path).c_str(), native(other).c_str()), 0);
    AudioFile::takeLog();
    QCOMPARE(AudioFile::write(path, {{TAG_TITLE, QStringLiteral("New")}}), 0);
    QCOMPARE(AudioFile::takeLog().size(), 1);
    QVERIFY(AudioFile::read(other).texts.isEmpty());
}

void TestSave::readOnlyPlacesAreLeftAlone()
{
    const QString folder = m_folder.filePath(QStringLiteral("locked"));
    QDir().mkpath(folder);
    const QString path = Fixtures::copyTone(QStringLiteral("mp3"), folder);
    const QByteArray before = contentOf(path);
    AudioFile::takeLog();
    QCOMPARE(::chmod(native(path).c_str(), 0444), 0);
    QVERIFY(AudioFile::write(path, {{TAG_TITLE, QStringLiteral("T")}}) != 0);
    QCOMPARE(AudioFile::takeLog().size(), 1);
    QCOMPARE(::chmod(native(path).c_str(), 0644), 0);
    QCOMPARE(::chmod(native(folder).c_str(), 0555), 0);
    QVERIFY(AudioFile::write(path, {{TAG_TITLE, QStringLiteral("T")}}) != 0);
    const QStringList log = AudioFile::takeLog();
    QCOMPARE(log.size(), 1);
    QVERIFY(log.first().contains(path));
    QCOMPARE(::chmod(native(folder).c_str(), 0755), 0);
    QCOMPARE(contentOf(path), before);
    QVERIFY(leftovers(folder).isEmpty());
}

void TestSave::aFileThatIsGoneIsNotMade()
{
    const QString path = m_folder.filePath(QStringLiteral("gone.mp3"));
    QVERIFY(AudioFile::write(path, {{TAG_TITLE, QStringLiteral("T")}}) != 0);
    QVERIFY(!QFile::exists(path));
}

void TestSave::aFullDiskLeavesTheOldFile()
{
    // A limit on file sizes ends writes as a full disk does.
    std::signal(SIGXFSZ, SIG_IGN);
    rlimit limit = {};
    getrlimit(RLIMIT_FSIZE, &limit);
    const QByteArray cover = Fixtures::jpeg(600, 600, 1);
    for (const QString& kind : Fixtures::formats()) {
        const QString path = Fixtures::copyTone(kind, m_folder.path());
        const QByteArray before = contentOf(path);
        // Room for the copy but not for the cover, and not even for the copy.
        for (const int room : {before.size() + 2000, before.size() / 2}) {
            const rlimit small{rlim_t(room), limit.rlim_max};
            AudioFile::takeLog();
            setrlimit(RLIMIT_FSIZE, &small);
            const int result = AudioFile::write(path, {{TAG_TITLE, QStringLiteral("T")}}, &cover);
            setrlimit(RLIMIT_FSIZE, &limit);
            QVERIFY2(result != 0, qPrintable(kind));
            QCOMPARE(AudioFile::takeLog().size(), 1);
            QCOMPARE(contentOf(path), before);
            QVERIFY(leftovers(m_folder.path()).isEmpty());
        }
    }
}

void TestSave::aKillLeavesTheOldOrTheNewFile()
{
    const int kills = sanitized ? 80 : 200;
    const QStringList kinds = Fixtures::formats();
    QHash<QString, QByteArray> sounds;
    QStringList paths;
    for (const QString& kind : kinds) {
        paths.append(Fixtures::copyTone(kind, m_folder.path(), QStringLiteral("kill")));
        AudioFile::write(paths.last(), {{TAG_TITLE, QStringLiteral("Title 0")}});
        sounds.insert(paths.last(), Sound::sumOf(paths.last()));
    }
    QRandomGenerator random(7);
    int unfinished = 0;
    for (int i = 0; i < kills; ++i) {
        const QString& path = paths.at(i % paths.size());
        const pid_t writer = ::fork();
        QVERIFY(writer >= 0);
        if (writer == 0) {
            for (int n = 0;; ++n) {
                const QByteArray cover = Fixtures::jpeg(60 + n % 3 * 200, 80, n % 5);
                AudioFile::write(path, {{TAG_TITLE, QStringLiteral("Title %1").arg(n)}}, &cover);
            }
        }
        ::usleep(useconds_t(2000 + random.bounded(18000)));
        ::kill(writer, SIGKILL);
        ::waitpid(writer, nullptr, 0);
        unfinished += !leftovers(m_folder.path()).isEmpty();
        QVERIFY2(AudioFile::read(path).texts.value(TAG_TITLE).startsWith(QLatin1String("Title ")),
                 qPrintable(path));
        QVERIFY(AudioFile::properties(path).duration > 2900);
        QCOMPARE(AudioFile::write(path, {{TAG_TITLE, QStringLiteral("Title after")}}), 0);
    }
    qInfo("%d of %d kills came in the middle of a save", unfinished, kills);
    QVERIFY(unfinished > 0);
    for (const QString& path : qAsConst(paths))
        QCOMPARE(Sound::sumOf(path), sounds.value(path));
    QVERIFY(leftovers(m_folder.path()).isEmpty());
}

QTEST_GUILESS_MAIN(TestSave)
#include "tst_save.moc"
