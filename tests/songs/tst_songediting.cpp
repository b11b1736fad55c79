#include "audiocore/iaudiotag.h"
#include "audiofile.h"
#include "fixtures.h"
#include "loggedlines.h"
#include "severalpictures.h"
#include "songeditingfixture.h"

#include <QTemporaryDir>
#include <QtTest>

namespace {
/// Notes what is asked of a tag.
class RecordingTag final : public IAudioTag
{
public:
    QStringList calls;

    qint32 Open(const char32_t*) override { return note(QStringLiteral("open")); }
    void Reserved1() override {}
    qint32 Close() override { return note(QStringLiteral("close")); }
    void Reserved3() override {}
    qint32 Save() override { return note(QStringLiteral("save")); }
    qint32 GetItemCount() override { return 0; }
    TagItem GetItem(qint32) override { return {}; }
    void Reserved7() override {}
    void Reserved8() override {}
    qint32 SetItem(TagItem item) override
    {
        const QString value = item.dataKind == 0
                                  ? QString::fromUcs4(static_cast<char32_t*>(item.data), item.size / 4)
                                  : QString::fromLatin1(static_cast<char*>(item.data), item.size);
        return note(
            QStringLiteral("set %1/%2/%3 \"%4\"").arg(item.id).arg(item.type).arg(item.dataKind).arg(value));
    }
    void Reserved10() override {}
    void Reserved11() override {}
    qint32 RemoveItem(qint32 type) override { return note(QStringLiteral("remove %1").arg(type)); }

private:
    qint32 note(const QString& call)
    {
        calls.append(call);
        return 0;
    }
};
} // namespace

class TestSongEditing : public SongEditingFixture
{
    Q_OBJECT

private slots:
    void initTestCase() { start(); }

    void itemsAreReplacedInTheirOrder();
    void aChosenPictureIsWrittenWhole();
    void anUnreadablePictureIsNone_data();
    void anUnreadablePictureIsNone();
    void everyFailedSaveIsLogged_data();
    void everyFailedSaveIsLogged();
    void theSongTakesTheEdit();
    void anEditedFileIsStillTheOneThatIsListed();
    void theCoverGetsItsPicture();
    void aSongWithoutDataIsLeftAlone();
    void whatElseASaveChangedIsKnown_data();
    void whatElseASaveChangedIsKnown();
    void picturesThatGoAreKnown();
    void whatTheUserChangedIsNoSurprise();
    void aFailedSaveSaysWhy();
    void aFailedEditIsTakenBack();
    void whatCannotBeReadIsNotTakenBack();
};

void TestSongEditing::itemsAreReplacedInTheirOrder()
{
    RecordingTag tag;
    SongEdit edit;
    edit.title = QStringLiteral("T");
    edit.artist = QStringLiteral("A");
    edit.genre = QStringLiteral("Pop");
    edit.year = 1987;
    SongEditing::writeTag(tag, edit);
    QCOMPARE(tag.calls, QStringList({"remove 1", "set -1/1/0 \"A\"", "remove 0", "set -1/0/0 \"T\"",
                                     "remove 2", "set -1/2/0 \"\"", "remove 3", "set -1/3/0 \"Pop\"",
                                     "remove 4", "set -1/4/0 \"1987\"", "remove 5", "set -1/5/0 \"0\"",
                                     "remove 9", "set -1/9/1 \"\"", "save"}));
}

void TestSongEditing::aChosenPictureIsWrittenWhole()
{
    RecordingTag tag;
    SongEdit edit;
    edit.newCoverPath = Fixtures::saveBytes(QByteArray("\0pic\0ture", 9), m_folder.filePath("bytes"));
    SongEditing::writeTag(tag, edit);
    const QString expected = QStringLiteral("set -1/9/1 \"%1\"").arg(QString::fromLatin1("\0pic\0ture", 9));
    QVERIFY(tag.calls.contains(expected));
}

void TestSongEditing::anUnreadablePictureIsNone_data()
{
    QTest::addColumn<QString>("path");
    QTest::newRow("missing") << m_folder.filePath("missing");
    QTest::newRow("directory") << m_folder.path();
    const QString vast = Fixtures::saveBytes("x", m_folder.filePath("vast"));
    QFile(vast).resize(400ll * 1024 * 1024);
    QTest::newRow("vast") << vast;
}

void TestSongEditing::anUnreadablePictureIsNone()
{
    QFETCH(QString, path);
    RecordingTag tag;
    SongEdit edit;
    edit.newCoverPath = path;
    const LoggedLines lines;
    SongEditing::writeTag(tag, edit);
    const QStringList log = LoggedLines::take();
    QVERIFY(tag.calls.contains(QStringLiteral("set -1/9/1 \"\"")));
    QCOMPARE(log.size(), 1);
    QVERIFY(log.first().contains(path));
}

void TestSongEditing::everyFailedSaveIsLogged_data()
{
    QTest::addColumn<QString>("path");
    QTest::newRow("missing") << m_folder.filePath("missing.mp3");
    QTest::newRow("garbage") << Fixtures::saveBytes("garbage", m_folder.filePath("garbage.mp3"));
    QTest::newRow("empty") << Fixtures::saveBytes("", m_folder.filePath("empty.mp3"));
    QTest::newRow("directory") << m_folder.path();
}

void TestSongEditing::everyFailedSaveIsLogged()
{
    QFETCH(QString, path);
    const auto song = songOn(path);
    AudioFile::read(path); // whoever looked at the file before
    for (int time = 0; time < 3; ++time) {
        const LoggedLines lines;
        SongEditing::apply(*song, sampleEdit());
        const QStringList log = LoggedLines::take();
        QCOMPARE(log.size(), 1);
        QVERIFY2(log.first().contains(path + QLatin1String(": the tag was not saved: ")),
                 qPrintable(log.first()));
    }
}

void TestSongEditing::theSongTakesTheEdit()
{
    const auto song = songOn(Fixtures::copyTone("mp3", m_folder.path()));
    SongEdit edit = sampleEdit();
    edit.year = -5;
    const SongEditing::Outcome outcome = SongEditing::apply(*song, edit);
    QVERIFY(!outcome.coverChanged);
    const LocalMusicInfo& local = *song->localInfo;
    QCOMPARE(local.title, edit.title);
    QCOMPARE(local.artist, edit.artist);
    QCOMPARE(local.album, edit.album);
    QCOMPARE(local.genre, edit.genre);
    QCOMPARE(local.year, qint64(-5));
    QCOMPARE(local.trackNumber, qint64(3));
    QVERIFY(local.coverPath.isEmpty());
}

/// Saving puts a new file in its place, and deleting removes only what is listed.
void TestSongEditing::anEditedFileIsStillTheOneThatIsListed()
{
    const QString path = Fixtures::copyTone("mp3", m_folder.path());
    const auto song = songOn(path);
    song->localInfo->file = FileState::ofEntry(path);
    SongEdit edit = sampleEdit();
    SongEditing::apply(*song, edit);
    QCOMPARE(song->localInfo->file, FileState::ofEntry(path));

    // What was not saved is not ours.
    QVERIFY(QFile::remove(path));
    Fixtures::saveBytes("no music", path);
    edit.title += "!";
    const LoggedLines lines;
    SongEditing::apply(*song, edit);
    QVERIFY(song->localInfo->file != FileState::ofEntry(path));
}

void TestSongEditing::theCoverGetsItsPicture()
{
    const auto song = songOn(Fixtures::copyTone("mp3", m_folder.path()));
    SongEdit edit = sampleEdit();
    edit.newCoverPath =
        Fixtures::savePicture(Fixtures::plain(900, 600, QColor(10, 200, 30)), m_folder.filePath("big.png"));
    SongEditing::apply(*song, edit);
    QCOMPARE(song->localInfo->coverPath, edit.newCoverPath);
    QCOMPARE(song->localInfo->cover->size(), QSize(300, 200)); // songs carry small pictures
    edit.newCoverPath = Fixtures::saveBytes("no picture", m_folder.filePath("text.png"));
    SongEditing::apply(*song, edit);
    QCOMPARE(Fixtures::pixels(*song->localInfo->cover), Fixtures::pixels(Fixtures::genericCover()));
}

void TestSongEditing::aSongWithoutDataIsLeftAlone()
{
    QMusicInfo song;
    const SongEditing::Outcome outcome = SongEditing::apply(song, sampleEdit());
    QVERIFY(!outcome.coverChanged && !outcome.coverUsed);
    QVERIFY(!song.localInfo);
}

void TestSongEditing::whatElseASaveChangedIsKnown_data()
{
    everyFormat();
}

namespace {
/// As the panel hands a song back whose values nobody touched.
SongEdit untouchedEdit(const LocalMusicInfo& local)
{
    SongEdit edit;
    edit.title = local.title;
    edit.artist = local.artist;
    edit.album = local.album;
    edit.genre = local.genre;
    edit.year = int(local.year);
    edit.trackNumber = int(local.trackNumber);
    return edit;
}
} // namespace

void TestSongEditing::whatElseASaveChangedIsKnown()
{
    using FootLines::SideEffect;
    QFETCH(QString, kind);
    const auto song = songOn(Fixtures::copyTone(kind, m_folder.path()));
    LocalMusicInfo& local = *song->localInfo;
    SongEdit edit = untouchedEdit(local);
    edit.title = QStringLiteral("Midnight Ferry");
    QVERIFY(SongEditing::apply(*song, edit).alsoChanged.isEmpty()); // nor do year and track come of nothing
    edit = sampleEdit();
    edit.genre = QStringLiteral("Électro");
    edit.newCoverPath = Fixtures::saveBytes(Fixtures::jpeg(40, 40, 1), m_folder.filePath("cover.jpg"));
    QVERIFY(SongEditing::apply(*song, edit).alsoChanged.isEmpty());

    edit = untouchedEdit(local);
    edit.genre = QStringLiteral("Pop");
    edit.genreChosen = false;
    AudioFile::write(local.filePath, {{TAG_ARTIST, QStringLiteral("Of another program")}});
    const QVector<SideEffect> effects = SongEditing::apply(*song, edit).alsoChanged;
    QCOMPARE(effects.size(), 3);
    QCOMPARE(effects.at(0).field, SideEffect::Cover);
    QCOMPARE(effects.at(1).field, SideEffect::Artist);
    QCOMPARE(effects.at(1).before, QStringLiteral("Of another program"));
    QCOMPARE(effects.at(1).after, edit.artist);
    QCOMPARE(effects.at(2).field, SideEffect::Genre);
    QCOMPARE(effects.at(2).before, QStringLiteral("Électro"));
    QCOMPARE(effects.at(2).after, QStringLiteral("Pop"));
    QVERIFY(SongEditing::apply(*song, edit).alsoChanged.isEmpty());
}

/// Of a file with more pictures than the one that is shown.
void TestSongEditing::picturesThatGoAreKnown()
{
    using FootLines::SideEffect;
    const QByteArray front = Fixtures::jpeg(40, 40, 1);
    const auto song = songOn(Fixtures::copyTone("mp3", m_folder.path()));
    const QString& path = song->localInfo->filePath;
    SongEdit edit = untouchedEdit(*song->localInfo);
    SeveralPictures::add(path, {front, front + 'b', front + 'c'});
    QVector<SideEffect> effects = SongEditing::apply(*song, edit).alsoChanged;
    QCOMPARE(effects.size(), 2);
    QCOMPARE(effects.at(0).field, SideEffect::Cover);
    QCOMPARE(effects.at(1).field, SideEffect::OtherPictures);
    QCOMPARE(effects.at(1).before, QString("2"));

    SeveralPictures::add(path, {front, front + 'b'});
    edit.newCoverPath = Fixtures::saveBytes(front, m_folder.filePath("kept.jpg"));
    edit.coverKept = true;
    effects = SongEditing::apply(*song, edit).alsoChanged;
    QCOMPARE(effects.size(), 1);
    QCOMPARE(effects.at(0).field, SideEffect::OtherPictures);
    QCOMPARE(effects.at(0).before, QString("1"));
    QCOMPARE(SeveralPictures::countIn(path), 1);
}

void TestSongEditing::whatTheUserChangedIsNoSurprise()
{
    const auto song = songOn(Fixtures::copyTone("mp3", m_folder.path()));
    SongEditing::apply(*song, sampleEdit());
    SongEdit edit;
    edit.title = QStringLiteral("Midnight Ferry");
    edit.genre = QStringLiteral("Pop");
    edit.year = 1999;
    edit.trackNumber = 9;
    const SongEditing::Outcome outcome = SongEditing::apply(*song, edit);
    QVERIFY(!outcome.failed());
    QVERIFY(outcome.alsoChanged.isEmpty());
    QCOMPARE(SongEditing::lineOf(*song, outcome), QStringLiteral("Saved \"Midnight Ferry\"."));
}

void TestSongEditing::aFailedSaveSaysWhy()
{
    const auto song = songOn(m_folder.filePath("gone.mp3"));
    const LoggedLines lines;
    SongEdit edit = sampleEdit();
    SongEditing::Outcome outcome = SongEditing::apply(*song, edit);
    QVERIFY(outcome.failed());
    QCOMPARE(outcome.file, SAVE_FILE_GONE);
    edit.title.clear(); // the file's name stands in
    outcome = SongEditing::apply(*song, edit);
    QCOMPARE(SongEditing::lineOf(*song, outcome),
             QStringLiteral("\"gone.mp3\" could not be saved: the file is gone."));
}

void TestSongEditing::aFailedEditIsTakenBack()
{
    const QString path = Fixtures::copyTone("flac", m_folder.path());
    const auto song = songOn(path);
    SongEdit edit = sampleEdit();
    edit.newCoverPath = Fixtures::saveBytes(Fixtures::jpeg(40, 40, 1), m_folder.filePath("cover.jpg"));
    SongEditing::apply(*song, edit);
    QFile::setPermissions(path, QFile::ReadOwner);
    const LoggedLines lines;
    SongEdit other = edit;
    other.title = QStringLiteral("Midnight Ferry");
    other.year = 1;
    other.newCoverPath = Fixtures::saveBytes(Fixtures::jpeg(40, 40, 2), m_folder.filePath("other.jpg"));
    QCOMPARE(SongEditing::apply(*song, other).file, SAVE_FILE_READ_ONLY);
    QCOMPARE(song->localInfo->title, other.title);
    QVERIFY(SongEditing::takeBack(*song));
    const LocalMusicInfo& local = *song->localInfo;
    QCOMPARE(local.title, edit.title);
    QCOMPARE(local.artist, edit.artist);
    QCOMPARE(local.album, edit.album);
    QCOMPARE(local.genre, edit.genre);
    QCOMPARE(local.year, qint64(edit.year));
    QCOMPARE(local.trackNumber, qint64(edit.trackNumber));
    QCOMPARE(Fixtures::readBytes(local.coverPath), Fixtures::readBytes(edit.newCoverPath));
    QCOMPARE(local.file, FileState::ofEntry(path));
    QVERIFY(!local.cover->isNull());
}

void TestSongEditing::whatCannotBeReadIsNotTakenBack()
{
    const auto song = songOn(m_folder.filePath("gone.mp3"));
    const LoggedLines lines;
    SongEditing::apply(*song, sampleEdit());
    QVERIFY(!SongEditing::takeBack(*song));
    QCOMPARE(song->localInfo->title, sampleEdit().title);
    QMusicInfo none;
    QVERIFY(!SongEditing::takeBack(none));
}

QTEST_MAIN(TestSongEditing)
#include "tst_songediting.moc"
