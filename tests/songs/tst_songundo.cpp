#include "audiocore/iaudiotag.h"
#include "audiofile.h"
#include "fixtures.h"
#include "removalfixture.h"
#include "songs/filechanges.h"
#include "songs/removaltally.h"
#include "songs/songediting.h"
#include "songs/songundo.h"

/// What is taken back of what was done to songs, in files and lists.
class TestSongUndo : public RemovalFixture
{
    Q_OBJECT

private slots:
    void initTestCase() { start(); }
    void init()
    {
        prepare();
        m_undo = std::make_unique<SongUndo>();
    }
    void cleanup()
    {
        m_undo.reset();
        qDeleteAll(m_all);
        for (IAudioTag* tag : qAsConst(m_ownTags))
            ::operator delete(tag);
        m_ownTags.clear();
        AudioFile::takeLog();
    }

    void withoutAChangeNothingHappens();
    void aDeletionIsTakenBack();
    void onlySongsWithAFileComeBack();
    void anEditIsTakenBack();
    void aSaveWithoutItsCoverCanBeTakenBackAndDeleted();
    void whatIsForgottenIsFreed();

private:
    QMusicInfo* tone(const QString& name);
    void remove(QMusicInfo* song);
    void endDeletion()
    {
        RemovalTally tally;
        tally.addFiles(m_removal->removed());
        m_undo->endDeletion(tally);
        m_removal = std::make_unique<FileRemoval>();
    }

    std::unique_ptr<SongUndo> m_undo;
    QList<IAudioTag*> m_ownTags;
};

/// A song on a music file, as an intake makes it: nobody's but the lists'.
QMusicInfo* TestSongUndo::tone(const QString& name)
{
    auto song = std::make_unique<QMusicInfo>();
    song->localInfo = std::make_unique<LocalMusicInfo>();
    LocalMusicInfo& local = *song->localInfo;
    local.filePath = Fixtures::copyTone("mp3", m_folder->path(), name);
    AudioFile::write(local.filePath, {{TAG_TITLE, name}});
    local.title = name;
    local.file = FileState::ofEntry(local.filePath);
    m_tags.append(CreateTag());
    m_ownTags.append(m_tags.last());
    m_tags.last()->Open(local.filePath.toStdU32String().c_str());
    m_all.append(song.release());
    return m_all.last();
}

void TestSongUndo::remove(QMusicInfo* song)
{
    m_undo->songsLeft({*SongRemoval::removeOne(lists(), song, -1, KeptFiles(), *m_removal)});
}

void TestSongUndo::withoutAChangeNothingHappens()
{
    QVERIFY(m_undo->next().isEmpty());
    const SongUndo::Undone undone = m_undo->undo(lists());
    QVERIFY(undone.line.isEmpty() && !undone.failed && !undone.edited && undone.returned.isEmpty());
    endDeletion();
    QVERIFY(m_undo->next().isEmpty());
}

void TestSongUndo::aDeletionIsTakenBack()
{
    for (const char* name : {"a", "b", "c", "d"})
        tone(name);
    const QList<QMusicInfo*> all = m_all;
    const QList<IAudioTag*> tags = m_tags;
    remove(all.at(2));
    remove(all.at(0));
    endDeletion();
    QCOMPARE(m_undo->next(), QString("the deletion of 2 songs"));
    QCOMPARE(tags.at(0)->GetItemCount(), 0);
    const SongUndo::Undone undone = m_undo->undo(lists());
    QCOMPARE(undone.line, QString("2 songs are back from the trash."));
    QVERIFY(!undone.failed);
    QCOMPARE(undone.returned, QList<QMusicInfo*>({all.at(2), all.at(0)}));
    QCOMPARE(m_all, all);
    QCOMPARE(m_tags, tags);
    for (IAudioTag* tag : tags)
        QCOMPARE(tag->GetItemCount(), 1); // open again
    for (const QMusicInfo* song : all)
        QVERIFY(song->localInfo->file == FileState::ofEntry(fileOf(song)));
}

/// Of several in one deletion.
void TestSongUndo::onlySongsWithAFileComeBack()
{
    for (const char* name : {"back", "taken", "changed", "gone"})
        tone(name);
    const QList<QMusicInfo*> all = m_all;
    AudioFile::write(fileOf(all.at(2)), {{TAG_ALBUM, "Of another program"}}); // its file stays
    QVERIFY(QFile::remove(fileOf(all.at(3))));
    for (QMusicInfo* song : all)
        remove(song);
    QVERIFY(m_all.isEmpty());
    Fixtures::saveBytes("somebody's", fileOf(all.at(1)));
    endDeletion();
    const SongUndo::Undone undone = m_undo->undo(lists());
    QVERIFY(undone.failed);
    QCOMPARE(m_all, QList<QMusicInfo*>({all.at(0), all.at(2)}));
    QCOMPARE(m_tags.size(), 2);
    QCOMPARE(undone.returned.size(), 2);
}

void TestSongUndo::anEditIsTakenBack()
{
    QMusicInfo* const song = tone("a");
    SongEdit edit;
    edit.title = "New";
    m_undo->history().add(SongEditing::apply(*song, edit).change);
    QCOMPARE(m_undo->next(), QString("the edit of \"New\""));
    const SongUndo::Undone undone = m_undo->undo(lists());
    QCOMPARE(undone.edited, song);
    QCOMPARE(song->localInfo->title, QString("a"));
    QCOMPARE(undone.line, QString("Took back the edit of \"a\"."));
    edit.title = "a"; // as it is
    edit.genreChosen = false;
    QVERIFY(!SongEditing::apply(*song, edit).change);
    QVERIFY(QFile::remove(fileOf(song)));
    QVERIFY(!SongEditing::apply(*song, SongEdit()).change);
}

void TestSongUndo::aSaveWithoutItsCoverCanBeTakenBackAndDeleted()
{
    constexpr int tooLarge = 33 * 1024 * 1024;
    QMusicInfo* const song = tone("a");
    SongEdit edit;
    edit.title = "New";
    edit.newCoverPath =
        Fixtures::saveBytes(Fixtures::jpeg(40, 40, 1).append(tooLarge, 'x'), m_folder->filePath("cover.jpg"));
    SongEditing::Outcome outcome = SongEditing::apply(*song, edit);
    QCOMPARE(outcome.file, SAVE_PICTURE_TOO_LARGE);
    QVERIFY(outcome.change);
    QVERIFY(song->localInfo->file == FileState::ofEntry(fileOf(song))); // or no deletion would take it
    m_undo->history().add(std::move(outcome.change));
    QCOMPARE(m_undo->undo(lists()).edited, song);
    QCOMPARE(AudioFile::read(fileOf(song)).texts.value(TAG_TITLE), QString("a"));
}

void TestSongUndo::whatIsForgottenIsFreed()
{
    remove(tone("a")); // or a leak is found
    endDeletion();
    m_undo->forget();
    QVERIFY(m_undo->next().isEmpty());
    QVERIFY(m_undo->undo(lists()).line.isEmpty());
    QVERIFY(m_all.isEmpty());
    QCOMPARE(m_bin.files(), QStringList("a.mp3"));
}

QTEST_MAIN(TestSongUndo)
#include "tst_songundo.moc"
