// What the user takes back in the window of what was done to tracks of the music library.
#include "itunes/itunestrackrecord.h"
#include "undofixture.h"

#include <QComboBox>

class TestTrackUndo : public UndoFixture
{
    Q_OBJECT

private slots:
    void initTestCase() { start(); }
    void init() { prepareFoot(); }
    void cleanup() { clearFoot(); }

    void anEditIsTakenBack_data();
    void anEditIsTakenBack();
    void artworkThatCameAfterTheEditIsNotShown_data();
    void artworkThatCameAfterTheEditIsNotShown();
    void editsAreTakenBackOneAfterTheOther();
    void aTrackIsUndefinedAgain();
    void anEditThatChangesNothingIsNoStep();
    void aFailedEditGoesWithTheOneBefore();
    void aGroupComesBack_data();
    void aGroupComesBack();
    void aGroupThatIsShownIsWholeAgain();
    void allGroupsComeBackAtOnce();
    void whatTheLibraryKeptComesBackIntoTheListsToo();
    void editsAndDeletionsAreTakenBackInTurn();
    void whatOthersWroteIntoAMediaFileStays();
    void whatOthersWroteIntoTheLibraryStays();
    void aMediaFileThatCannotBeWrittenStays();
    void whatPlaysPlaysOn();
    void aScanForgetsAll();
    void aSwitchForgetsAll();

private:
    /// Three tracks "One", two "Two" and one "Alone" without a genre, in two playlists.
    void collect();
    void makeLibrary();
    void written() const;
    QByteArray closed() const
    {
        closeITunesLibrary();
        return library();
    }
    const iTunesTrackRecord& record(int row) const { return *songs().at(row)->track; }
};

void TestTrackUndo::collect()
{
    for (int i = 0; i < 3; ++i)
        addTrack(media(QString("one%1").arg(i), "One"), "One");
    addTrack(media("alone", "Alone"), "Alone", 5000);
    m_tracks.last().genre.clear();
    for (int i = 0; i < 2; ++i)
        addTrack(media(QString("two%1").arg(i), "Two"), "Two");
    makeLibrary();
}

void TestTrackUndo::makeLibrary()
{
    QVector<Fixtures::ITunesPlaylist> lists = {{"Library", {}}, {"Odd", {}}};
    for (int i = 0; i < m_tracks.size(); ++i) {
        lists[0].trackIds.append(m_tracks.at(i).trackId);
        if (i % 2 == 1)
            lists[1].trackIds.append(m_tracks.at(i).trackId);
    }
    Fixtures::writeLibrary(m_library, Fixtures::itunesLibrary(m_tracks, lists));
    QVERIFY(scan());
}

/// What waited stands in the library file.
void TestTrackUndo::written() const
{
    QTRY_VERIFY(!QFile::exists(m_library + ".melodrift-journal"));
}

void TestTrackUndo::anEditIsTakenBack_data()
{
    QTest::addColumn<bool>("byKeys");
    QTest::addColumn<bool>("written");
    QTest::newRow("by the link, before the library is written") << false << false;
    QTest::newRow("by keys, afterwards") << true << true;
}

void TestTrackUndo::anEditIsTakenBack()
{
    QFETCH(bool, byKeys);
    const QString path = media("a", "Of the file", Fixtures::jpeg(60, 60, 4));
    addTrack(path, "Ferry");
    m_tracks.last().genre = "Électro";
    addTrack(media("b", "Other"), "Other");
    makeLibrary();
    const QByteArray before = library();
    const AudioFile::Content mediaBefore = AudioFile::read(path);
    const iTunesTrackRecord recordBefore = record(0);
    const QString coverBefore = songs().first()->coverPath;
    edit(0, "Midnight Ferry");
    type(panel(), "m_lineYear", "1999");
    type(panel(), "m_lineTrackNo", "99");
    panel()->findChild<QComboBox*>("m_comboGenre")->setCurrentText("Rock");
    const QString chosen = Fixtures::saveBytes(Fixtures::jpeg(80, 80, 9), m_folder->filePath("chosen.jpg"));
    part<MusicDetailedInfoWidget>("m_musicDetailedWidget")->SlotReceiveIdentifyCover(chosen);
    clickIn(panel(), "m_btnApply");
    QCOMPARE(told(), QString("Saved \"Midnight Ferry\"."));
    QCOMPARE(links(), QStringList("Undo"));
    QCOMPARE(AudioFile::read(path).picture, Fixtures::jpeg(80, 80, 9));
    QFETCH(bool, written);
    if (written) {
        this->written();
        QVERIFY(library() != before);
    }
    if (byKeys)
        undo();
    else
        clickLink("Undo");
    QCOMPARE(told(), QString("Took back the edit of \"Ferry\"."));
    QCOMPARE(links(), QStringList());
    QCOMPARE(AudioFile::read(path).texts, mediaBefore.texts);
    QCOMPARE(AudioFile::read(path).picture, mediaBefore.picture);
    QCOMPARE(listed(), QStringList({"Ferry", "Other"}));
    QCOMPARE(shownTitle(), QString("Ferry"));
    QCOMPARE(panel()->findChild<RetractLabel*>("m_genreName")->getName(), QString("Électro"));
    QCOMPARE(record(0).year, recordBefore.year);
    QCOMPARE(record(0).trackNumber, recordBefore.trackNumber);
    QCOMPARE(QByteArray(record(0).location), QByteArray(recordBefore.location));
    QCOMPARE(songs().first()->coverPath, coverBefore);
    QCOMPARE(Fixtures::readBytes(coverBefore), mediaBefore.picture);
    QCOMPARE(closed(), before);
}

void TestTrackUndo::artworkThatCameAfterTheEditIsNotShown_data()
{
    QTest::addColumn<QByteArray>("artwork");
    QTest::newRow("of a file with artwork") << Fixtures::jpeg(60, 60, 4);
    QTest::newRow("of one without") << QByteArray();
}

/// The covers of a large library are fetched while the user edits already.
void TestTrackUndo::artworkThatCameAfterTheEditIsNotShown()
{
    QFETCH(QByteArray, artwork);
    addTrack(media("a", "Ferry", artwork), "Ferry");
    makeLibrary();
    const QString fetched = songs().first()->coverPath;
    const QByteArray picture = Fixtures::jpeg(80, 80, 9);
    edit(0, "Midnight Ferry");
    part<MusicDetailedInfoWidget>("m_musicDetailedWidget")
        ->SlotReceiveIdentifyCover(Fixtures::saveBytes(picture, m_folder->filePath("chosen.jpg")));
    clickIn(panel(), "m_btnApply");
    QFile::remove(fetched);
    Fixtures::saveBytes(picture, fetched);
    undo();
    QCOMPARE(songs().first()->coverPath, fetched);
    QCOMPARE(Fixtures::readBytes(fetched), artwork);
    QCOMPARE(Fixtures::readBytes(m_folder->filePath("chosen.jpg")), picture);
    apply(0, "Night Ferry"); // which sends it along
    QCOMPARE(AudioFile::read(m_folder->filePath("a.mp3")).picture, artwork);
}

void TestTrackUndo::editsAreTakenBackOneAfterTheOther()
{
    const QString path = media("a", "0");
    const QString other = media("b", "0");
    addTrack(path, "0");
    addTrack(other, "0");
    makeLibrary();
    const QByteArray before = library();
    editsGoBackInTurn(path, other);
    QCOMPARE(closed(), before);
}

void TestTrackUndo::aTrackIsUndefinedAgain()
{
    collect();
    QCOMPARE(counts().at(1), QString("Undefined songs(1)"));
    click("m_btnMusicUndefined");
    clickRow("m_allMusicListView", 0);
    clickIn(panel(), "m_btnEdit");
    panel()->findChild<QComboBox*>("m_comboGenre")->setCurrentText("Rock");
    clickIn(panel(), "m_btnApply");
    QCOMPARE(counts().at(1), QString("Undefined songs(0)"));
    undo();
    QCOMPARE(counts().at(1), QString("Undefined songs(1)"));
    QCOMPARE(listed(), QStringList("Alone"));
    QVERIFY(AudioFile::read(m_folder->filePath("alone.mp3")).texts.value(TAG_GENRE).isEmpty());
}

/// And takes none of the steps before it away.
void TestTrackUndo::anEditThatChangesNothingIsNoStep()
{
    addTrack(media("a", "Ferry"), "Ferry");
    makeLibrary();
    clickRow("m_allMusicListView", 0);
    clickIn(panel(), "m_btnEdit");
    clickIn(panel(), "m_btnApply");
    QCOMPARE(told(), QString("Saved \"Ferry\"."));
    QCOMPARE(links(), QStringList());
    apply(0, "Midnight Ferry");
    apply(0, "Midnight Ferry");
    undo();
    QCOMPARE(listed(), QStringList("Ferry"));
    QCOMPARE(links(), QStringList());
}

/// Which the song shows, though nothing holds it.
void TestTrackUndo::aFailedEditGoesWithTheOneBefore()
{
    const QString path = media("a", "Ferry");
    addTrack(path, "Ferry");
    makeLibrary();
    apply(0, "Midnight Ferry");
    setMode(path, 0444);
    apply(0, "Nowhere");
    QCOMPARE(listed(), QStringList("Nowhere"));
    setMode(path, 0644);
    undo();
    QCOMPARE(told(), QString("Took back the edit of \"Ferry\"."));
    QCOMPARE(listed(), QStringList("Ferry"));
    QCOMPARE(titleOf(path), QString("Ferry"));
}

void TestTrackUndo::aGroupComesBack_data()
{
    QTest::addColumn<bool>("written");
    QTest::newRow("before the library is written") << false;
    QTest::newRow("afterwards") << true;
}

void TestTrackUndo::aGroupComesBack()
{
    collect();
    const QByteArray before = library();
    const QList<QMusicInfo*> all = songs();
    const QStringList counted = counts();
    QCOMPARE(counted, QStringList({"All songs(6)", "Undefined songs(1)", "Duplicate songs(2)"}));
    openGroup(0);
    clearGroup();
    QCOMPARE(told(), QString("2 tracks taken out of the library; their files stay."));
    QCOMPARE(links(), QStringList({"Undo", "Next group"}));
    QVERIFY(link("Undo")->toolTip().contains("Takes back the deletion of 2 tracks (Ctrl+Z)"));
    QCOMPARE(counts(), QStringList({"All songs(4)", "Undefined songs(1)", "Duplicate songs(1)"}));
    QFETCH(bool, written);
    if (written) {
        this->written();
        QCOMPARE(idsInLibrary(), idsOf({0, 3, 4, 5}));
    }
    click("m_btnMusicAll");
    undo();
    QCOMPARE(told(), QString("2 tracks are back in the library."));
    QCOMPARE(links(), QStringList());
    QCOMPARE(songs(), all);
    QCOMPARE(listed(), QStringList({"One", "One", "One", "Alone", "Two", "Two"}));
    QCOMPARE(counts(), counted);
    openGroup(0); // and all can be done again
    QCOMPARE(rows().size(), 3);
    clearGroup();
    QCOMPARE(shownIds(), idsOf({0, 3, 4, 5}));
    undo();
    QCOMPARE(closed(), before);
}

void TestTrackUndo::aGroupThatIsShownIsWholeAgain()
{
    collect();
    openGroup(1);
    clearGroup();
    QCOMPARE(told(), QString("1 track taken out of the library; its file stays."));
    QCOMPARE(listed("m_dupMusicListView"), QStringList("One"));
    clickLink("Undo");
    QCOMPARE(told(), QString("1 track is back in the library."));
    QCOMPARE(listed("m_dupMusicListView"), QStringList({"One", "Two"}));
    QCOMPARE(part<QListView>("m_dupMusicListView")->currentIndex().row(), 1);
    QVERIFY(groupPanel()->isVisible());
    QCOMPARE(rows().size(), 2);
    QVERIFY(rows().first()->isKept());
}

void TestTrackUndo::allGroupsComeBackAtOnce()
{
    collect();
    const QByteArray before = library();
    const QList<QMusicInfo*> all = songs();
    const QStringList counted = counts();
    openGroup(1);
    clickIn(groupPanel(), "m_btnClearAll");
    QTRY_COMPARE(told(), QString("3 tracks taken out of the library; their files stay."));
    QCOMPARE(links(), QStringList("Undo"));
    QCOMPARE(counts(), QStringList({"All songs(3)", "Undefined songs(1)", "Duplicate songs(0)"}));
    undo();
    QCOMPARE(told(), QString("3 tracks are back in the library."));
    QCOMPARE(links(), QStringList());
    QCOMPARE(listed("m_dupMusicListView"), QStringList({"One", "Two"}));
    QCOMPARE(counts(), counted);
    QCOMPARE(songs(), all);
    QCOMPARE(closed(), before);
}

/// A deletion takes songs out of the lists whatever the library says.
void TestTrackUndo::whatTheLibraryKeptComesBackIntoTheListsToo()
{
    for (int i = 0; i < 4; ++i)
        addTrack(media(QString("one%1").arg(i), "One"), "One");
    m_tracks[2].persistentId = m_tracks[1].persistentId;
    makeLibrary();
    const QByteArray before = library();
    const QList<QMusicInfo*> all = songs();
    openGroup(0);
    clearGroup();
    QVERIFY2(told().startsWith("1 track taken out of the library; its file stays. 2 tracks could not "),
             qPrintable(told()));
    QCOMPARE(songs().size(), 1);
    undo();
    QCOMPARE(told(), QString("1 track is back in the library."));
    QCOMPARE(songs(), all);
    QCOMPARE(closed(), before);
}

void TestTrackUndo::editsAndDeletionsAreTakenBackInTurn()
{
    collect();
    const QByteArray before = library();
    const QList<QMusicInfo*> all = songs();
    const QString second = m_folder->filePath("one1.mp3");
    apply(1, "Edited");
    apply(1, "One");
    openGroup(0);
    clearGroup();
    click("m_btnMusicAll");
    undo();
    QCOMPARE(songs(), all);
    QCOMPARE(titleOf(second), QString("One"));
    undo();
    QCOMPARE(titleOf(second), QString("Edited"));
    QCOMPARE(listed().at(1), QString("Edited"));
    undo();
    QCOMPARE(titleOf(second), QString("One"));
    QCOMPARE(counts().at(2), QString("Duplicate songs(2)"));
    QCOMPARE(links(), QStringList());
    QCOMPARE(closed(), before);
}

void TestTrackUndo::whatOthersWroteIntoAMediaFileStays()
{
    const QString path = media("a", "Ferry");
    const QString other = media("b", "Other");
    addTrack(path, "Ferry");
    addTrack(other, "Other");
    makeLibrary();
    apply(1, "Changed");
    apply(0, "Midnight Ferry");
    written();
    AudioFile::write(path, {{TAG_ALBUM, "Of another program"}});
    const QByteArray mediaBytes = Fixtures::readBytes(path);
    const QByteArray bytes = library();
    undo();
    QCOMPARE(told(), QString("The edit of \"Midnight Ferry\" cannot be taken back: another program made "
                             "changes since."));
    QCOMPARE(Fixtures::readBytes(path), mediaBytes);
    QCOMPARE(library(), bytes);
    QCOMPARE(listed(), QStringList({"Midnight Ferry", "Changed"}));
    QCOMPARE(links(), QStringList("Undo")); // of the step before
    undo();
    QCOMPARE(titleOf(other), QString("Other"));
}

void TestTrackUndo::whatOthersWroteIntoTheLibraryStays()
{
    collect();
    openGroup(0);
    clearGroup();
    written();
    const QByteArray theirs = library().replace("12.0.1", "12.0.2");
    Fixtures::writeLibrary(m_library, theirs);
    const QList<QMusicInfo*> left = songs();
    const QStringList counted = counts();
    undo();
    QCOMPARE(told(),
             QString("The deletion of 2 tracks cannot be taken back: another program made changes since."));
    QCOMPARE(links(), QStringList());
    QCOMPARE(songs(), left);
    QCOMPARE(counts(), counted);
    QCOMPARE(closed(), theirs);
}

void TestTrackUndo::aMediaFileThatCannotBeWrittenStays()
{
    const QString path = media("a", "Ferry");
    addTrack(path, "Ferry");
    makeLibrary();
    apply(0, "Midnight Ferry");
    written();
    const QByteArray bytes = library();
    setMode(path, 0444);
    undo();
    QCOMPARE(told(), QString("The edit of \"Midnight Ferry\" cannot be taken back: the file is read-only."));
    QCOMPARE(titleOf(path), QString("Midnight Ferry"));
    QCOMPARE(listed(), QStringList("Midnight Ferry"));
    QCOMPARE(closed(), bytes);
}

void TestTrackUndo::whatPlaysPlaysOn()
{
    collect();
    const QString second = m_folder->filePath("one1.mp3");
    edit(1, "One");
    type(panel(), "m_lineYear", "1999");
    clickIn(panel(), "m_btnApply");
    clickRow("m_allMusicListView", 1, true);
    QTRY_COMPARE(played(), QString("00::01"));
    undo();
    QCOMPARE(told(), QString("Took back the edit of \"One\"."));
    QVERIFY(AudioFile::read(second).texts.value(TAG_YEAR).isEmpty());
    openGroup(0);
    clearGroup();
    undo();
    QCOMPARE(told(), QString("2 tracks are back in the library."));
    QTRY_COMPARE(played(), QString("00::02"));
}

void TestTrackUndo::aScanForgetsAll()
{
    collect();
    apply(3, "Edited");
    openGroup(0);
    clearGroup();
    QVERIFY(link("Undo"));
    QVERIFY(scan());
    QCOMPARE(links(), QStringList());
    undo();
    QCOMPARE(told(), QString());
    QCOMPARE(shownIds(), idsOf({0, 3, 4, 5}));
}

void TestTrackUndo::aSwitchForgetsAll()
{
    collect();
    apply(3, "Edited");
    openGroup(0);
    clearGroup();
    switchToLocal();
    QCOMPARE(links(), QStringList());
    undo();
    QCOMPARE(told(), QString());
    closeITunesLibrary();
    QCOMPARE(idsInLibrary(), idsOf({0, 3, 4, 5}));
    QCOMPARE(titleOf(m_folder->filePath("alone.mp3")), QString("Edited"));
}

QTEST_MAIN(TestTrackUndo)
#include "tst_trackundo.moc"
