#include "audiocore/tagitem.h"
#include "audiofile.h"
#include "fixtures.h"
#include "loggedlines.h"
#include "owntrash.h"
#include "severalpictures.h"
#include "songfixtures.h"
#include "songs/changehistory.h"
#include "songs/filechanges.h"

#include <QDateTime>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

/// What is taken back, and what is left alone.
class TestChangeHistory : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void anEditIsTakenBack_data();
    void anEditIsTakenBack();
    void aSongWithoutTagsLosesThoseOfTheEdit();
    void editsOfOneFileAreTakenBackOneAfterTheOther();
    void whatOthersChangedStays_data();
    void whatOthersChangedStays();
    void aFileThatCannotBeWrittenStays();
    void whatChangedNothingIsNoStep();
    void aDeletionIsTakenBack();
    void whatCannotComeBackIsTold();
    void aDeletionForGoodIsNoStep();
    void changesOfAllKindsAreTakenBackInTurn();
    void thereIsAnEndToSteps();
    void thereIsAnEndToPictures();
    void everythingIsForgottenAtOnce();
    void aCoverThatCannotBeWrittenBackStaysAway();
    void picturesThatDoNotComeBackAreTold();
    void severalPicturesThatWereLeftStay();
    void changesHaveNames();
    void whomAChangeWasAboutIsHandedBack();

private:
    QString song(const char* kind = "mp3", const QString& name = "song") const;
    void edit(const QString& path, const QString& title);
    RemovedFiles remove(const QStringList& paths) const;
    static QString titleOf(const QString& path) { return AudioFile::read(path).texts.value(TAG_TITLE); }

    const OwnTrash m_bin;
    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<ChangeHistory> m_history;
};

void TestChangeHistory::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    m_history = std::make_unique<ChangeHistory>();
    m_bin.empty();
}

/// With texts and a picture.
QString TestChangeHistory::song(const char* kind, const QString& name) const
{
    const QString path = Fixtures::copyTone(kind, m_folder->path(), name);
    const QByteArray picture = Fixtures::jpeg(80, 60, 3);
    const int saved = AudioFile::write(path,
                                       {{TAG_TITLE, "Old"},
                                        {TAG_ARTIST, "Artist"},
                                        {TAG_ALBUM, QString()},
                                        {TAG_GENRE, QStringLiteral("Électro")},
                                        {TAG_YEAR, "1999"},
                                        {TAG_TRACK, "7"}},
                                       &picture);
    if (saved != 0)
        qFatal("cannot write %s", qUtf8Printable(path));
    return path;
}

/// As the panel does it: all texts are replaced, and the picture goes.
void TestChangeHistory::edit(const QString& path, const QString& title)
{
    const FileChanges::Before before = FileChanges::Before::of(path);
    const QByteArray none;
    AudioFile::write(path,
                     {{TAG_TITLE, title},
                      {TAG_ARTIST, "Other"},
                      {TAG_ALBUM, "Album"},
                      {TAG_GENRE, "Pop"},
                      {TAG_YEAR, "0"},
                      {TAG_TRACK, "0"}},
                     &none);
    m_history->add(FileChanges::edit(before, nullptr));
}

RemovedFiles TestChangeHistory::remove(const QStringList& paths) const
{
    FileRemoval removal;
    for (const QString& path : paths)
        removal.remove(path, FileState::ofEntry(path));
    return removal.removed();
}

void TestChangeHistory::anEditIsTakenBack_data()
{
    QTest::addColumn<QString>("kind");
    for (const QString& kind : Fixtures::formats())
        QTest::newRow(qPrintable(kind)) << kind;
}

void TestChangeHistory::anEditIsTakenBack()
{
    QFETCH(QString, kind);
    const QString path = song(qPrintable(kind));
    const AudioFile::Content before = AudioFile::read(path);
    const AudioFile::Properties sound = AudioFile::properties(path);
    edit(path, "New");
    QCOMPARE(m_history->steps(), 1);
    QVERIFY(AudioFile::read(path).texts != before.texts);

    const TakenBack taken = m_history->takeBack();
    QCOMPARE(taken.kind, TakenBack::Kind::Edit);
    QCOMPARE(taken.paths, QStringList(path));
    QVERIFY(taken.failed.isEmpty());
    const AudioFile::Content after = AudioFile::read(path);
    QCOMPARE(after.texts, before.texts);
    QCOMPARE(after.picture, before.picture);
    QCOMPARE(AudioFile::properties(path).duration, sound.duration);
    QVERIFY(m_history->isEmpty());
    QCOMPARE(m_history->takeBack().kind, TakenBack::Kind::Nothing);
}

void TestChangeHistory::aSongWithoutTagsLosesThoseOfTheEdit()
{
    const QString path = Fixtures::copyTone("mp3", m_folder->path());
    const AudioFile::Content before = AudioFile::read(path);
    edit(path, "New");
    QVERIFY(m_history->takeBack().failed.isEmpty());
    QCOMPARE(AudioFile::read(path).texts, before.texts);
    QVERIFY(AudioFile::read(path).picture.isEmpty());
}

void TestChangeHistory::editsOfOneFileAreTakenBackOneAfterTheOther()
{
    const QString path = song();
    const QString other = song("mp3", "other");
    for (const char* title : {"1", "2", "3"}) {
        edit(path, title);
        edit(other, title);
    }
    for (const char* title : {"2", "1", "Old"})
        for (const QString& file : {other, path}) {
            QCOMPARE(m_history->takeBack().paths, QStringList(file));
            QCOMPARE(titleOf(file), QString(title));
        }
    QVERIFY(!AudioFile::read(path).picture.isEmpty());
}

void TestChangeHistory::whatOthersChangedStays_data()
{
    QTest::addColumn<QString>("what");
    for (const char* what : {"gone", "longer", "of another time"})
        QTest::newRow(what) << QString(what);
}

void TestChangeHistory::whatOthersChangedStays()
{
    QFETCH(QString, what);
    const QString path = song();
    edit(path, "New");
    QFile file(path);
    if (what == "gone") {
        QVERIFY(file.remove());
    } else if (what == "longer") {
        QVERIFY(file.open(QIODevice::Append) && file.write("x") == 1);
    } else {
        QVERIFY(file.open(QIODevice::ReadWrite));
        const QDateTime before = QDateTime::currentDateTime().addSecs(-9);
        QVERIFY(file.setFileTime(before, QFileDevice::FileModificationTime));
    }
    file.close();
    const QByteArray bytes = Fixtures::readBytes(path);
    const LoggedLines log;
    const TakenBack taken = m_history->takeBack();
    QCOMPARE(LoggedLines::take().size(), 1);
    QCOMPARE(taken.kind, TakenBack::Kind::Edit);
    QVERIFY(taken.paths.isEmpty());
    QCOMPARE(taken.failed.size(), 1);
    QCOMPARE(taken.failed.first().path, path);
    QVERIFY(!taken.failed.first().reason.isEmpty());
    QCOMPARE(Fixtures::readBytes(path), bytes);
    QVERIFY(m_history->isEmpty()); // older steps are not hidden behind it
}

void TestChangeHistory::aFileThatCannotBeWrittenStays()
{
    const QString path = song();
    edit(path, "New");
    const QByteArray bytes = Fixtures::readBytes(path);
    QVERIFY(QFile::setPermissions(path, QFile::ReadOwner));
    const TakenBack taken = m_history->takeBack();
    AudioFile::takeLog();
    QCOMPARE(taken.failed.size(), 1);
    QVERIFY(taken.paths.isEmpty());
    QCOMPARE(Fixtures::readBytes(path), bytes);
}

void TestChangeHistory::whatChangedNothingIsNoStep()
{
    const QString path = song();
    m_history->add(FileChanges::edit(FileChanges::Before::of(path), nullptr));
    m_history->add(FileChanges::edit(FileChanges::Before::of(m_folder->filePath("nothing")), nullptr));
    m_history->add(FileChanges::deletion(RemovedFiles(), {}));
    QVERIFY(m_history->isEmpty());
}

void TestChangeHistory::aDeletionIsTakenBack()
{
    const QStringList paths = {song(), song("mp3", "other"), song("flac")};
    QList<QByteArray> contents;
    for (const QString& path : paths)
        contents.append(Fixtures::readBytes(path));
    m_history->add(FileChanges::deletion(remove(paths), {}));
    for (const QString& path : paths)
        QVERIFY(!QFile::exists(path));
    const TakenBack taken = m_history->takeBack();
    QCOMPARE(taken.kind, TakenBack::Kind::Deletion);
    QCOMPARE(taken.paths, paths);
    QVERIFY(taken.failed.isEmpty());
    for (int i = 0; i < paths.size(); ++i)
        QCOMPARE(Fixtures::readBytes(paths[i]), contents[i]);
    QVERIFY(m_bin.files().isEmpty());
    QVERIFY(m_bin.notes().isEmpty());
}

/// The other files come back.
void TestChangeHistory::whatCannotComeBackIsTold()
{
    const QStringList paths = {song("mp3", "a"), song("mp3", "b"), song("mp3", "c"), song("mp3", "d")};
    RemovedFiles files = remove(paths.mid(0, 3));
    QVERIFY(QFile::remove(paths[3]));
    files.deleted.append({paths[3], "no trash"});
    m_history->add(FileChanges::deletion(files, {}));
    Fixtures::saveBytes("somebody's", paths[0]);
    QVERIFY(QFile::remove(m_bin.path("b.mp3")));
    const LoggedLines log;
    const TakenBack taken = m_history->takeBack();
    QCOMPARE(LoggedLines::take().size(), 2); // the last one was told when it was deleted
    QCOMPARE(taken.paths, QStringList(paths[2]));
    QCOMPARE(taken.failed.size(), 3);
    for (int i = 0; i < 3; ++i) {
        QCOMPARE(taken.failed[i].path, paths[i < 2 ? i : 3]);
        QVERIFY(!taken.failed[i].reason.isEmpty());
    }
    QCOMPARE(Fixtures::readBytes(paths[0]), QByteArray("somebody's"));
    QCOMPARE(m_bin.files(), QStringList("a.mp3"));
}

void TestChangeHistory::aDeletionForGoodIsNoStep()
{
    m_bin.spoil();
    const QString path = song();
    m_history->add(FileChanges::deletion(remove({path}), {}));
    QVERIFY(!QFile::exists(path));
    QVERIFY(m_history->isEmpty());
}

void TestChangeHistory::changesOfAllKindsAreTakenBackInTurn()
{
    const QString path = song();
    edit(path, "1");
    m_history->add(FileChanges::deletion(remove({path}), {}));
    QCOMPARE(m_history->takeBack().kind, TakenBack::Kind::Deletion);
    QCOMPARE(titleOf(path), QString("1"));
    edit(path, "2");
    m_history->add(FileChanges::deletion(remove({path}), {}));
    for (const char* title : {"2", "1", "Old"}) {
        QCOMPARE(m_history->takeBack().paths, QStringList(path));
        QCOMPARE(titleOf(path), QString(title));
    }
}

void TestChangeHistory::thereIsAnEndToSteps()
{
    const QString path = Fixtures::saveBytes("x", m_folder->filePath("file"));
    FileChanges::Before before;
    before.path = path;
    before.state = FileState::of(path);
    Fixtures::saveBytes("longer", path);
    for (int i = 0; i < ChangeHistory::mostSteps + 5; ++i)
        m_history->add(FileChanges::edit(before, nullptr));
    QCOMPARE(m_history->steps(), ChangeHistory::mostSteps);
}

void TestChangeHistory::thereIsAnEndToPictures()
{
    const QString path = Fixtures::saveBytes("x", m_folder->filePath("file"));
    FileChanges::Before before;
    before.path = path;
    before.state = FileState::of(path);
    Fixtures::saveBytes("longer", path);
    before.content.picture = QByteArray(int(ChangeHistory::mostPictureBytes / 4), 'x');
    for (int i = 0; i < 9; ++i)
        m_history->add(FileChanges::edit(before, nullptr));
    QCOMPARE(m_history->steps(), 4);
    QVERIFY(QFile::remove(path));
    m_history->takeBack(); // and its picture is not counted any more
    Fixtures::saveBytes("longer", path);
    m_history->add(FileChanges::edit(before, nullptr));
    QCOMPARE(m_history->steps(), 4);
    before.content.picture = QByteArray(int(ChangeHistory::mostPictureBytes + 1), 'x');
    m_history->add(FileChanges::edit(before, nullptr));
    QVERIFY(m_history->isEmpty());
}

void TestChangeHistory::everythingIsForgottenAtOnce()
{
    const QString path = song();
    edit(path, "1");
    m_history->add(FileChanges::deletion(remove({path}), {}));
    m_history->forget();
    QVERIFY(m_history->isEmpty());
    QCOMPARE(m_history->takeBack().kind, TakenBack::Kind::Nothing);
    QVERIFY(!QFile::exists(path));
    QCOMPARE(m_bin.files().size(), 1);
}

/// A step back is whole, or none.
void TestChangeHistory::aCoverThatCannotBeWrittenBackStaysAway()
{
    constexpr int moreThanAFileTakes = 40 * 1024 * 1024;
    const QString path = song();
    FileChanges::Before before = FileChanges::Before::of(path);
    before.content.picture.append(moreThanAFileTakes, 'x');
    edit(path, "New");
    m_history->forget();
    m_history->add(FileChanges::edit(before, nullptr));
    const QByteArray bytes = Fixtures::readBytes(path);
    const TakenBack taken = m_history->takeBack();
    QCOMPARE(taken.failed.size(), 1);
    QVERIFY(taken.paths.isEmpty());
    QCOMPARE(Fixtures::readBytes(path), bytes);
}

/// A save puts one back, the cover.
void TestChangeHistory::picturesThatDoNotComeBackAreTold()
{
    const QString path = song();
    const QByteArray cover = AudioFile::read(path).picture;
    SeveralPictures::add(path, {cover + 'b', cover + 'c'});
    QCOMPARE(SeveralPictures::countIn(path), 3);
    edit(path, "New");
    QCOMPARE(SeveralPictures::countIn(path), 0);
    const TakenBack taken = m_history->takeBack();
    QVERIFY(taken.failed.isEmpty());
    QCOMPARE(taken.picturesLost, 2);
    QCOMPARE(SeveralPictures::countIn(path), 1);
}

/// As when the new one was too large for the file.
void TestChangeHistory::severalPicturesThatWereLeftStay()
{
    const QString path = song();
    SeveralPictures::add(path, {Fixtures::jpeg(40, 40, 1)});
    const FileChanges::Before before = FileChanges::Before::of(path);
    AudioFile::write(path, {{TAG_TITLE, "New"}});
    m_history->add(FileChanges::edit(before, nullptr));
    const TakenBack taken = m_history->takeBack();
    QVERIFY(taken.failed.isEmpty());
    QCOMPARE(taken.picturesLost, 0);
    QCOMPARE(titleOf(path), QString("Old"));
    QCOMPARE(SeveralPictures::countIn(path), 2);
}

void TestChangeHistory::changesHaveNames()
{
    QCOMPARE(m_history->name(), QString());
    const QString path = song();
    edit(path, "1");
    QCOMPARE(m_history->name(), QString("the edit of \"song.mp3\""));
    m_history->add(FileChanges::deletion(remove({path}), {}));
    QCOMPARE(m_history->name(), QString("the deletion of 1 song"));
    m_history->takeBack();
    QCOMPARE(m_history->name(), QString("the edit of \"song.mp3\""));
}

void TestChangeHistory::whomAChangeWasAboutIsHandedBack()
{
    QMusicInfo* const own = reinterpret_cast<QMusicInfo*>(this); // not looked into
    const QString path = song();
    m_history->add(FileChanges::deletion(remove({path}), {{own, nullptr, 7}}));
    const TakenBack taken = m_history->takeBack();
    QCOMPARE(taken.removed.size(), 1);
    QCOMPARE(taken.removed.first().song, own);
    QCOMPARE(taken.removed.first().position, 7);
    QVERIFY(m_history->isEmpty());
    QCOMPARE(m_history->takeBack().removed.size(), 0);
}

QTEST_GUILESS_MAIN(TestChangeHistory)
#include "tst_changehistory.moc"
