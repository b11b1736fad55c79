#include "audiocore/iaudiotag.h"
#include "audiofile.h"
#include "fixtures.h"
#include "sanitized.h"
#include "vtableslot.h"

#include <taglib/apetag.h>
#include <taglib/attachedpictureframe.h>
#include <taglib/fileref.h>
#include <taglib/flacfile.h>
#include <taglib/flacpicture.h>
#include <taglib/id3v1tag.h>
#include <taglib/id3v2tag.h>
#include <taglib/mp4file.h>
#include <taglib/mpegfile.h>
#include <taglib/textidentificationframe.h>
#include <taglib/tpropertymap.h>
#include <taglib/vorbisfile.h>
#include <taglib/wavfile.h>
#include <taglib/xiphcomment.h>

#include <QDir>
#include <QTemporaryDir>
#include <QtTest>

#include <malloc.h>
#include <sys/resource.h>
#include <thread>
#include <unistd.h>

namespace {
const QHash<int, QString>& sample()
{
    static const QHash<int, QString> texts = {
        {TAG_ARTIST, QStringLiteral("Jörg")},      {TAG_TITLE, QStringLiteral("Añejo ☕ 夜")},
        {TAG_ALBUM, QStringLiteral("Blå timmen")}, {TAG_GENRE, QStringLiteral("Rock")},
        {TAG_YEAR, QStringLiteral("2012")},        {TAG_TRACK, QStringLiteral("3")}};
    return texts;
}

std::string native(const QString& path)
{
    return QFile::encodeName(path).toStdString();
}

TagLib::ID3v2::AttachedPictureFrame* picture(const QByteArray& bytes,
                                             TagLib::ID3v2::AttachedPictureFrame::Type type)
{
    auto* frame = new TagLib::ID3v2::AttachedPictureFrame;
    frame->setType(type);
    frame->setMimeType("image/jpeg");
    frame->setPicture(TagLib::ByteVector(bytes.constData(), unsigned(bytes.size())));
    return frame;
}
} // namespace

class TestTag : public QObject
{
    Q_OBJECT

private slots:
    void everyFormatKeepsSixTextsAndThePicture_data();
    void everyFormatKeepsSixTextsAndThePicture();
    void operationsStandAtTheirSlots();
    void severalValuesComeAsOneText();
    void ofSeveralTitlesTheFirstIsReadAndAllStay_data();
    void ofSeveralTitlesTheFirstIsReadAndAllStay();
    void theYearIsFourDigitsOfWhateverDate();
    void aYearMayStandUnderItsOwnName();
    void aShortYearStandsAlone_data();
    void aShortYearStandsAlone();
    void theTrackIsTheNumberBeforeTheSlash();
    void everyVersionOfId3IsRead_data();
    void everyVersionOfId3IsRead();
    void anApeTagOnMp3IsRead();
    void infoChunksOfWavAreRead();
    void theFrontCoverWins();
    void oldCoverArtOfOggIsRead();
    void theContentDecidesNotTheName();
    void anUntaggedFileHasNoItems();
    void itemsBeyondTheLastAreAbsent();
    void noPathIsLoggedAsNone();
    void closingMayComeFromAnotherThread();
    void openObjectsHoldNoDescriptorAndLittleMemory();

private:
    QTemporaryDir m_folder;
};

void TestTag::everyFormatKeepsSixTextsAndThePicture_data()
{
    QTest::addColumn<QString>("kind");
    for (const QString& kind : Fixtures::formats() + Fixtures::furtherKinds())
        QTest::newRow(qPrintable(kind)) << kind;
}

void TestTag::everyFormatKeepsSixTextsAndThePicture()
{
    QFETCH(QString, kind);
    const QString path = Fixtures::copyTone(kind, m_folder.path());
    const QByteArray cover = Fixtures::jpeg(200, 200, 1);
    QCOMPARE(AudioFile::write(path, sample(), &cover), 0);
    const AudioFile::Content content = AudioFile::read(path);
    QCOMPARE(content.texts, sample());
    QCOMPARE(content.picture, cover);
}

void TestTag::operationsStandAtTheirSlots()
{
    const QString path = Fixtures::copyTone(QStringLiteral("mp3"), m_folder.path());
    IAudioTag* tag = CreateTag();
    const std::u32string wide = path.toStdU32String();
    std::u32string title = U"By slot";
    slot<int (*)(IAudioTag*, const char32_t*)>(tag, 0)(tag, wide.c_str());
    slot<int (*)(IAudioTag*, int)>(tag, 12)(tag, TAG_TITLE);
    slot<int (*)(IAudioTag*, TagItem)>(tag, 9)(tag, {-1, TAG_TITLE, 0, int(title.size() * 4), title.data()});
    QCOMPARE(slot<int (*)(IAudioTag*)>(tag, 4)(tag), 0);
    QCOMPARE(slot<int (*)(IAudioTag*)>(tag, 5)(tag), 1);
    const TagItem item = slot<TagItem (*)(IAudioTag*, int)>(tag, 6)(tag, 0);
    QCOMPARE(item.type, int(TAG_TITLE));
    QCOMPARE(QString::fromUcs4(static_cast<char32_t*>(item.data)), QStringLiteral("By slot"));
    slot<int (*)(IAudioTag*)>(tag, 2)(tag);
    QCOMPARE(tag->GetItemCount(), 0);
    ::operator delete(tag);
}

void TestTag::severalValuesComeAsOneText()
{
    const QString path = Fixtures::copyTone(QStringLiteral("ogg"), m_folder.path());
    {
        TagLib::Ogg::Vorbis::File file(native(path).c_str());
        file.tag()->addField("ARTIST", "One", true);
        file.tag()->addField("ARTIST", "Two", false);
        QVERIFY(file.save());
    }
    QCOMPARE(AudioFile::read(path).texts.value(TAG_ARTIST), QStringLiteral("One; Two"));
}

void TestTag::ofSeveralTitlesTheFirstIsReadAndAllStay_data()
{
    QTest::addColumn<QString>("kind");
    for (const char* kind : {"mp3", "m4a", "ape", "flac", "ogg", "opus"})
        QTest::newRow(kind) << kind;
}

void TestTag::ofSeveralTitlesTheFirstIsReadAndAllStay()
{
    QFETCH(QString, kind);
    const QString path = Fixtures::copyTone(kind, m_folder.path());
    const TagLib::StringList both = TagLib::StringList("One").append("Two");
    {
        TagLib::FileRef file(native(path).c_str());
        TagLib::PropertyMap properties;
        properties["TITLE"] = both;
        file.file()->setProperties(properties);
        QVERIFY(file.save());
    }
    QCOMPARE(AudioFile::read(path).texts.value(TAG_TITLE), QStringLiteral("One"));
    // The application writes all texts, also those that were left as they were read.
    QCOMPARE(AudioFile::write(path, {{TAG_TITLE, "One"}, {TAG_ARTIST, "Singer"}}), 0);
    QVERIFY(TagLib::FileRef(native(path).c_str()).file()->properties()["TITLE"] == both);
}

void TestTag::theYearIsFourDigitsOfWhateverDate()
{
    const QString path = Fixtures::copyTone(QStringLiteral("flac"), m_folder.path());
    for (const char* date : {"2012", "2012-03-15T10:00", "15.03.2012", "20120315"}) {
        TagLib::FLAC::File file(native(path).c_str());
        file.xiphComment(true)->addField("DATE", date, true);
        QVERIFY(file.save());
        QCOMPARE(AudioFile::read(path).texts.value(TAG_YEAR), QStringLiteral("2012"));
    }
}

void TestTag::aYearMayStandUnderItsOwnName()
{
    const QString path = Fixtures::copyTone(QStringLiteral("flac"), m_folder.path());
    TagLib::FLAC::File file(native(path).c_str());
    file.xiphComment(true)->addField("YEAR", "1987", true);
    QVERIFY(file.save());
    QCOMPARE(AudioFile::read(path).texts.value(TAG_YEAR), QStringLiteral("1987"));
    file.xiphComment(true)->addField("DATE", "2012", true);
    QVERIFY(file.save());
    QCOMPARE(AudioFile::read(path).texts.value(TAG_YEAR), QStringLiteral("2012"));
}

void TestTag::aShortYearStandsAlone_data()
{
    QTest::addColumn<QString>("year");
    for (const char* date : {"987", "0987", " 987 ", "0987-05-01"})
        QTest::newRow(date) << "987";
    QTest::newRow("5") << "5";
    QTest::newRow("0012") << "12";
    QTest::newRow("987 or 2012") << "2012";
    for (const char* date : {"0", "000", "0000", "0000-05", "-5", "5 BC", "99-5", "early"})
        QTest::newRow(date) << QString();
}

void TestTag::aShortYearStandsAlone()
{
    QFETCH(QString, year);
    const QString path = Fixtures::copyTone(QStringLiteral("flac"), m_folder.path());
    TagLib::FLAC::File file(native(path).c_str());
    file.xiphComment(true)->addField("DATE", QTest::currentDataTag(), true);
    QVERIFY(file.save());
    QCOMPARE(AudioFile::read(path).texts.value(TAG_YEAR), year);
}

void TestTag::theTrackIsTheNumberBeforeTheSlash()
{
    const QString path = Fixtures::copyTone(QStringLiteral("flac"), m_folder.path());
    for (const char* track : {"3", "03", "3/12", "03/12"}) {
        TagLib::FLAC::File file(native(path).c_str());
        file.xiphComment(true)->addField("TRACKNUMBER", track, true);
        QVERIFY(file.save());
        QCOMPARE(AudioFile::read(path).texts.value(TAG_TRACK), QStringLiteral("3"));
    }
}

void TestTag::everyVersionOfId3IsRead_data()
{
    QTest::addColumn<int>("version");
    for (const int version : {1, 2, 3, 4})
        QTest::addRow("%d", version) << version;
}

void TestTag::everyVersionOfId3IsRead()
{
    QFETCH(int, version);
    const QString path = Fixtures::copyTone(QStringLiteral("mp3"), m_folder.path());
    if (version == 2) {
        // ID3v2.2, which no current writer makes: three-letter frames.
        const auto frame = [](const char* id, const QByteArray& text) {
            const int size = text.size() + 1;
            return QByteArray(id) + char(size >> 16) + char(size >> 8) + char(size) + '\0' + text;
        };
        const QByteArray frames = frame("TT2", "Title") + frame("TP1", "Artist") + frame("TAL", "Album") +
                                  frame("TCO", "(17)") + frame("TYE", "1999") + frame("TRK", "7/9");
        QByteArray tag = QByteArray("ID3\x02\0\0\0\0", 8) + char(frames.size() >> 7 & 0x7F) +
                         char(frames.size() & 0x7F) + frames;
        QFile file(path);
        QVERIFY(file.open(QIODevice::ReadWrite));
        const QByteArray audio = file.readAll();
        file.seek(0);
        file.write(tag + audio);
    } else {
        TagLib::MPEG::File file(native(path).c_str());
        TagLib::Tag* tag =
            version == 1 ? static_cast<TagLib::Tag*>(file.ID3v1Tag(true)) : file.ID3v2Tag(true);
        tag->setTitle("Title");
        tag->setArtist("Artist");
        tag->setAlbum("Album");
        tag->setGenre("Rock");
        tag->setYear(1999);
        tag->setTrack(7);
        QVERIFY(file.save(version == 1 ? TagLib::MPEG::File::ID3v1 : TagLib::MPEG::File::ID3v2,
                          TagLib::File::StripOthers, version == 3 ? TagLib::ID3v2::v3 : TagLib::ID3v2::v4,
                          TagLib::File::DoNotDuplicate));
    }
    const QHash<int, QString> texts = AudioFile::read(path).texts;
    QCOMPARE(texts.value(TAG_TITLE), QStringLiteral("Title"));
    QCOMPARE(texts.value(TAG_ARTIST), QStringLiteral("Artist"));
    QCOMPARE(texts.value(TAG_ALBUM), QStringLiteral("Album"));
    QCOMPARE(texts.value(TAG_GENRE), QStringLiteral("Rock"));
    QCOMPARE(texts.value(TAG_YEAR), QStringLiteral("1999"));
    QCOMPARE(texts.value(TAG_TRACK), QStringLiteral("7"));
}

void TestTag::anApeTagOnMp3IsRead()
{
    const QString path = Fixtures::copyTone(QStringLiteral("mp3"), m_folder.path());
    {
        TagLib::MPEG::File file(native(path).c_str());
        file.APETag(true)->setTitle("From APE");
        QVERIFY(file.save(TagLib::MPEG::File::APE, TagLib::File::StripOthers));
    }
    QCOMPARE(AudioFile::read(path).texts.value(TAG_TITLE), QStringLiteral("From APE"));
}

void TestTag::infoChunksOfWavAreRead()
{
    const QString path = Fixtures::copyTone(QStringLiteral("wav"), m_folder.path());
    {
        TagLib::RIFF::WAV::File file(native(path).c_str());
        file.InfoTag()->setTitle("From INFO");
        QVERIFY(file.save(TagLib::RIFF::WAV::File::Info));
    }
    QCOMPARE(AudioFile::read(path).texts.value(TAG_TITLE), QStringLiteral("From INFO"));
}

void TestTag::theFrontCoverWins()
{
    using Frame = TagLib::ID3v2::AttachedPictureFrame;
    const QString path = Fixtures::copyTone(QStringLiteral("mp3"), m_folder.path());
    const QByteArray front = Fixtures::jpeg(40, 40, 1);
    const QByteArray back = Fixtures::jpeg(40, 40, 2);
    {
        TagLib::MPEG::File file(native(path).c_str());
        file.ID3v2Tag(true)->addFrame(picture(back, Frame::BackCover));
        file.ID3v2Tag(true)->addFrame(picture(front, Frame::FrontCover));
        QVERIFY(file.save());
    }
    QCOMPARE(AudioFile::read(path).picture, front);
}

void TestTag::oldCoverArtOfOggIsRead()
{
    const QString path = Fixtures::copyTone(QStringLiteral("ogg"), m_folder.path());
    const QByteArray cover = Fixtures::jpeg(40, 40, 1);
    {
        TagLib::Ogg::Vorbis::File file(native(path).c_str());
        file.tag()->addField("COVERART", cover.toBase64().constData());
        QVERIFY(file.save());
    }
    QCOMPARE(AudioFile::read(path).picture, cover);
}

void TestTag::theContentDecidesNotTheName()
{
    const QString flac = Fixtures::copyTone(QStringLiteral("flac"), m_folder.path());
    QCOMPARE(AudioFile::write(flac, sample()), 0);
    const QString wrong = m_folder.filePath(QStringLiteral("really-flac.mp3"));
    QFile::rename(flac, wrong);
    QCOMPARE(AudioFile::read(wrong).texts, sample());
    QCOMPARE(AudioFile::write(wrong, {{TAG_TITLE, QStringLiteral("New")}}), 0);
    QCOMPARE(AudioFile::read(wrong).texts.value(TAG_TITLE), QStringLiteral("New"));
}

void TestTag::anUntaggedFileHasNoItems()
{
    for (const QString& kind : Fixtures::formats()) {
        const AudioFile::Content content = AudioFile::read(Fixtures::tone(kind));
        QVERIFY2(content.texts.isEmpty() && content.picture.isEmpty(), qPrintable(kind));
    }
}

void TestTag::itemsBeyondTheLastAreAbsent()
{
    const QString path = Fixtures::copyTone(QStringLiteral("mp3"), m_folder.path());
    IAudioTag* tag = CreateTag();
    QCOMPARE(tag->GetItemCount(), 0);
    tag->Open(path.toStdU32String().c_str());
    QCOMPARE(tag->GetItem(-1).size, 0);
    QCOMPARE(tag->GetItem(0).size, 0);
    QCOMPARE(tag->GetItem(1000).size, 0);
    ::operator delete(tag);
}

void TestTag::noPathIsLoggedAsNone()
{
    IAudioTag* tag = CreateTag();
    AudioFile::takeLog();
    QVERIFY(tag->Open(U"") != 0);
    QVERIFY(tag->Open(nullptr) != 0);
    QCOMPARE(AudioFile::takeLog(), QStringList({"a file: no path was given", "a file: no path was given"}));
    const char32_t half[] = {U'a', 0xD800, 0};
    QVERIFY(tag->Open(half) != 0);
    QCOMPARE(AudioFile::takeLog(), QStringList({"a file: has a name that is not valid text"}));
    ::operator delete(tag);
}

void TestTag::closingMayComeFromAnotherThread()
{
    const QString path = Fixtures::copyTone(QStringLiteral("mp3"), m_folder.path());
    AudioFile::write(path, sample());
    IAudioTag* tag = CreateTag();
    tag->Open(path.toStdU32String().c_str());
    QCOMPARE(tag->GetItemCount(), 6);
    std::thread([tag] { tag->Close(); }).join();
    QCOMPARE(tag->GetItemCount(), 0);
    ::operator delete(tag);
}

void TestTag::openObjectsHoldNoDescriptorAndLittleMemory()
{
    constexpr int objects = 3000;
    const QString path = Fixtures::copyTone(QStringLiteral("mp3"), m_folder.path());
    const QByteArray cover = Fixtures::jpeg(600, 600, 1);
    QCOMPARE(AudioFile::write(path, sample(), &cover), 0);
    QStringList paths;
    for (int i = 0; i < objects; ++i) {
        // Names of one file: the objects cannot tell, and the disk is spared.
        const QString name = m_folder.filePath(QStringLiteral("%1.mp3").arg(i));
        QCOMPARE(::link(native(path).c_str(), native(name).c_str()), 0);
        paths.append(name);
    }
    rlimit limit = {};
    getrlimit(RLIMIT_NOFILE, &limit);
    const rlimit few{256, limit.rlim_max};
    setrlimit(RLIMIT_NOFILE, &few);
    std::vector<IAudioTag*> tags;
    tags.reserve(objects);
    const size_t before = mallinfo2().uordblks;
    for (const QString& name : qAsConst(paths)) {
        IAudioTag* tag = CreateTag();
        tag->Open(name.toStdU32String().c_str());
        const int count = tag->GetItemCount();
        QCOMPARE(count, 7);
        for (int i = 0; i < count; ++i)
            QVERIFY(tag->GetItem(i).size > 0);
        tags.push_back(tag);
    }
    const qint64 each = (qint64(mallinfo2().uordblks) - qint64(before)) / objects;
    setrlimit(RLIMIT_NOFILE, &limit);
    qInfo("%lld bytes an open object", each);
    if (!sanitized) // which gives the memory in place of what is asked here
        QVERIFY2(each < 2048, qPrintable(QString::number(each)));
    for (IAudioTag* tag : tags)
        ::operator delete(tag);
}

QTEST_GUILESS_MAIN(TestTag)
#include "tst_tag.moc"
