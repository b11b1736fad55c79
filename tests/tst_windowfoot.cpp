// What the foot of the window tells of what the user does.
#include "common/retractlabel.h"
#include "dupmusicbarwidget.h"
#include "footfixture.h"

#include <QComboBox>
#include <QPlainTextEdit>

#include <unistd.h>

class TestWindowFoot : public FootFixture
{
    Q_OBJECT

private slots:
    void initTestCase() { start(); }
    void init() { prepareFoot(); }
    void cleanup() { clearFoot(); }

    void theLineLiesInTheFootStrip();
    void aSaveIsTold();
    void whatElseASaveChangedIsTold();
    void aFailedSaveIsToldAndCanBeTakenBack();
    void takingAFailedSaveBackShowsNoOtherPanel();
    void aSongThatIsLeftCanBeEditedAgain();
    void leavingByNavigationIsToldToo();
    void anUnchangedSongIsLeftSilently();
    void cancellingIsNoLeaving();
    void deletionsAreTold();
    void deletionsForGoodAreTold();
    void theNextGroupIsALinkAway();
    void aFileThatStaysIsTold();
    void anIntakeTellsWhatItLeftOut();
    void whatOpensOverTheWindowLeavesItInOnePiece();
    void aDropOfNothingElseIsTold();
    void namedPathsTakeWindowsMedia();
    void aSwitchEmptiesTheLine();
    void aScanWithoutALibraryIsTold();
    void aBrokenLibraryIsToldWithItsLine();
    void anEmptyLibraryIsTold();
    void aTrackThatCannotBeSavedCanBeTakenBack();
    void tracksTakenOutAreTold();
    void whatNoProgramOpensIsTold();
    void aSongWithoutASoundDeviceIsTold();
};

void TestWindowFoot::theLineLiesInTheFootStrip()
{
    for (const QSize& size : {QSize(1000, 700), QSize(1120, 713), QSize(1900, 1000)}) {
        m_window->resize(size);
        QCOMPARE(line()->geometry(), QRect(0, m_window->height() - 26, m_window->width(), 26));
    }
    QCOMPARE(told(), QString());
}

void TestWindowFoot::aSaveIsTold()
{
    switchToLocal();
    add({tone("a", "Ferry")});
    edit(0, "Midnight Ferry");
    QCOMPARE(told(), QString());
    clickIn(panel(), "m_btnApply");
    QCOMPARE(told(), QString("Saved \"Midnight Ferry\"."));
    QCOMPARE(links(), QStringList("Undo"));
}

void TestWindowFoot::whatElseASaveChangedIsTold()
{
    switchToLocal();
    const QString path = tone("a", "Midnight Ferry", "Électro");
    const QByteArray cover = Fixtures::jpeg(40, 40, 1);
    AudioFile::write(path, {}, &cover);
    add({path, tone("b", "Other")});
    edit(1, "Other");
    edit(0, "Midnight Ferry");
    auto* genres = panel()->findChild<QComboBox*>("m_comboGenre");
    QCOMPARE(genres->currentText(), QString("Pop"));
    clickIn(panel(), "m_btnApply");
    QCOMPARE(told(),
             QString("Saved \"Midnight Ferry\"; its cover was taken out, its genre changed from Électro "
                     "to Pop."));
    edit(0, "Midnight Ferry");
    genres->setCurrentText("Rock"); // by the user
    clickIn(panel(), "m_btnApply");
    QCOMPARE(told(), QString("Saved \"Midnight Ferry\"."));
}

void TestWindowFoot::aFailedSaveIsToldAndCanBeTakenBack()
{
    switchToLocal();
    const QString path = tone("a", "Ferry");
    add({path});
    setMode(m_folder->path(), 0555);
    edit(0, "Midnight Ferry");
    clickIn(panel(), "m_btnApply");
    if (::geteuid() == 0)
        QCOMPARE(told(), QString("\"Midnight Ferry\" could not be saved: the folder is read-only."));
    QVERIFY(told().startsWith("\"Midnight Ferry\" could not be saved: "));
    QCOMPARE(links(), QStringList("Show what the file says"));
    const auto shown = [this] { return panel()->findChild<RetractLabel*>("m_titleName")->getName(); };
    const auto listed = [this] {
        return part<QListView>("m_allMusicListView")->model()->index(0, 0).data().toString();
    };
    QCOMPARE(shown(), QString("Midnight Ferry"));
    QCOMPARE(listed(), QString("Midnight Ferry"));
    clickLink("Show what the file says");
    QCOMPARE(shown(), QString("Ferry"));
    QCOMPARE(listed(), QString("Ferry"));
    QCOMPARE(told(), QString());
}

void TestWindowFoot::takingAFailedSaveBackShowsNoOtherPanel()
{
    switchToLocal();
    const QString path = tone("a", "Ferry");
    QFile::copy(path, m_folder->filePath("b.mp3"));
    add({m_folder->path()});
    setMode(path, 0444);
    edit(0, "Midnight Ferry");
    clickIn(panel(), "m_btnApply");
    edit(0, "Typed");
    clickLink("Show what the file says");
    QCOMPARE(panel()->findChild<QLineEdit*>("m_lineTitle")->text(), QString("Typed"));
    QCOMPARE(songs().first()->localInfo->title, QString("Ferry"));
    clickIn(panel(), "m_btnApply");
    click("m_btnMusicDuplicate");
    clickLink("Show what the file says");
    QVERIFY(!panel()->isVisible());
    QCOMPARE(songs().first()->localInfo->title, QString("Ferry"));
}

void TestWindowFoot::aSongThatIsLeftCanBeEditedAgain()
{
    switchToLocal();
    add({tone("a", "Ferry"), tone("b", "Other")});
    edit(0, "Midnight Ferry");
    type(panel(), "m_lineYear", "1999");
    clickRow("m_allMusicListView", 1);
    QCOMPARE(told(), QString("Left \"Ferry\" without saving."));
    QCOMPARE(links(), QStringList("Edit again"));
    clickLink("Edit again");
    QVERIFY(panel()->findChild<QImageButton*>("m_btnApply")->isVisible());
    QCOMPARE(panel()->findChild<QLineEdit*>("m_lineTitle")->text(), QString("Midnight Ferry"));
    QCOMPARE(panel()->findChild<QLineEdit*>("m_lineYear")->text(), QString("1999"));
    QCOMPARE(part<QListView>("m_allMusicListView")->currentIndex().row(), 0);
    clickIn(panel(), "m_btnApply");
    QCOMPARE(told(), QString("Saved \"Midnight Ferry\"."));
}

void TestWindowFoot::leavingByNavigationIsToldToo()
{
    switchToLocal();
    add({tone("a", "Ferry"), tone("b", "Other")});
    edit(0, "Midnight Ferry");
    click("m_btnMusicDuplicate");
    QCOMPARE(told(), QString("Left \"Ferry\" without saving."));
    clickLink("Edit again");
    QVERIFY(panel()->isVisible());
    QCOMPARE(panel()->findChild<QLineEdit*>("m_lineTitle")->text(), QString("Midnight Ferry"));
}

void TestWindowFoot::anUnchangedSongIsLeftSilently()
{
    switchToLocal();
    add({tone("a", "Ferry"), tone("b", "Other")});
    clickRow("m_allMusicListView", 0);
    clickIn(panel(), "m_btnEdit");
    clickRow("m_allMusicListView", 1);
    QCOMPARE(told(), QString());
}

void TestWindowFoot::cancellingIsNoLeaving()
{
    switchToLocal();
    add({tone("a", "Ferry"), tone("b", "Other")});
    edit(0, "Midnight Ferry");
    clickIn(panel(), "m_btnCancel");
    clickRow("m_allMusicListView", 1);
    QCOMPARE(told(), QString());
}

void TestWindowFoot::deletionsAreTold()
{
    switchToLocal();
    const QString first = tone("a", "Same");
    for (const char* copy : {"b", "c"})
        QFile::copy(first, m_folder->filePath(QString(copy) + ".mp3"));
    add({m_folder->path()});
    click("m_btnMusicDuplicate");
    clickRow("m_dupMusicListView", 0);
    const QWidget* groups = part<QWidget>("m_dupMusicDetailedWidget");
    clickIn(groups, "m_btnClearAll");
    QCOMPARE(told(), QString("2 songs moved to the trash."));
    QCOMPARE(m_bin.files().size(), 2);
    QVERIFY(QFile::exists(first));
}

void TestWindowFoot::deletionsForGoodAreTold()
{
    switchToLocal();
    QFile::copy(tone("a", "Same"), m_folder->filePath("b.mp3"));
    add({m_folder->path()});
    click("m_btnMusicDuplicate");
    clickRow("m_dupMusicListView", 0);
    m_bin.spoil();
    clickIn(part<QWidget>("m_dupMusicDetailedWidget"), "m_btnClearAll");
    QVERIFY2(told().startsWith("1 song deleted for good: the trash "), qUtf8Printable(told()));
    QVERIFY(!QFile::exists(m_folder->filePath("b.mp3")));
}

void TestWindowFoot::theNextGroupIsALinkAway()
{
    switchToLocal();
    for (const char* title : {"One", "Two"})
        QFile::copy(tone(title, title), m_folder->filePath(QString(title) + "-copy.mp3"));
    add({m_folder->path()});
    click("m_btnMusicDuplicate");
    auto* groups = part<QListView>("m_dupMusicListView");
    clickRow("m_dupMusicListView", 0);
    m_dialogs->expectButton("m_btnOK");
    clickIn(part<QWidget>("m_dupMusicDetailedWidget"), "m_btnClearOne");
    QCOMPARE(told(), QString("1 song moved to the trash."));
    QCOMPARE(groups->model()->rowCount(), 1);
    click("m_btnMusicAll");
    clickLink("Next group");
    QVERIFY(groups->isVisible());
    QCOMPARE(groups->currentIndex().row(), 0);
    QCOMPARE(links(), QStringList("Undo")); // there is nowhere else to go
    QCOMPARE(told(), QString("1 song moved to the trash."));
    QCOMPARE(m_window->focusWidget(), part<QWidget>("m_viewFocus"));
    QCOMPARE(m_window->findChildren<DupMusicbarWidget*>().size(), 2);
    m_dialogs->expectButton("m_btnOK");
    clickIn(part<QWidget>("m_dupMusicDetailedWidget"), "m_btnClearOne");
    QCOMPARE(told(), QString("1 song moved to the trash."));
    QCOMPARE(links(), QStringList("Undo"));
}

void TestWindowFoot::aFileThatStaysIsTold()
{
    switchToLocal();
    const QString first = tone("a", "Same");
    const QString second = m_folder->filePath("b.mp3");
    QFile::copy(first, second);
    add({m_folder->path()});
    AudioFile::write(second, {{TAG_ALBUM, "Of another program"}});
    click("m_btnMusicDuplicate");
    clickRow("m_dupMusicListView", 0);
    clickIn(part<QWidget>("m_dupMusicDetailedWidget"), "m_btnClearAll");
    QVERIFY(QFile::exists(second));
    QCOMPARE(told(), QString("1 file could not be deleted: \"b.mp3\" (it is not the file that was listed any "
                             "more)."));
}

void TestWindowFoot::anIntakeTellsWhatItLeftOut()
{
    switchToLocal();
    tone("a", "Ferry");
    tone("b", "Windows", "Pop", "wma");
    const QString broken = m_folder->filePath("broken.mp3");
    Fixtures::writeLibrary(broken, "no music at all");
    add({m_folder->path()});
    QCOMPARE(told(),
             QString("1 of 2 files could not be read, 1 WMA file was left out (add it with Ctrl+O)."));
    QCOMPARE(links(), QStringList("Show"));
    clickLink("Show");
    auto* list = m_window->findChild<QPlainTextEdit*>("m_list");
    QVERIFY(list && list->isVisible() && list->isReadOnly());
    QCOMPARE(list->toPlainText(), broken + ": it holds no music that can be read\n" +
                                      m_folder->filePath("b.wma") +
                                      ": a WMA file, which is added with Ctrl+O");
    list->selectAll();
    QTest::keyClick(list, Qt::Key_C, Qt::ControlModifier);
    QCOMPARE(QApplication::clipboard()->text(), list->toPlainText());
    QTest::keyClick(list, Qt::Key_Escape);
    QTRY_VERIFY(!m_window->findChild<QPlainTextEdit*>("m_list"));
}

/// A part with a window of its own is under none of the others: the mark of the focus would keep clicks from
/// it.
void TestWindowFoot::whatOpensOverTheWindowLeavesItInOnePiece()
{
    switchToLocal();
    QFile::copy(tone("a", "Same"), m_folder->filePath("b.mp3"));
    Fixtures::writeLibrary(m_folder->filePath("broken.mp3"), "no music at all");
    add({m_folder->path()});
    clickLink("Show");
    click("m_btnMusicDuplicate");
    clickRow("m_dupMusicListView", 0);
    m_dialogs->expectButton("m_btnOK");
    clickIn(part<QWidget>("m_dupMusicDetailedWidget"), "m_btnClearOne");
    QCOMPARE(links(), QStringList("Undo"));
    for (const QWidget* each : m_window->findChildren<QWidget*>())
        QVERIFY2(each->isWindow() || !each->testAttribute(Qt::WA_NativeWindow),
                 qPrintable(each->objectName()));
}

void TestWindowFoot::aDropOfNothingElseIsTold()
{
    switchToLocal();
    const QString path = tone("b", "Windows", "Pop", "wma");
    m_dialogs->expect([](QWidget* offer) { offer->close(); });
    part<CenterWidget>("m_middleMusicWidget")->TakeDroppedPaths({path});
    QCOMPARE(told(), QString("1 WMA file was left out (add it with Ctrl+O)."));
    QCOMPARE(links(), QStringList("Show"));
}

void TestWindowFoot::namedPathsTakeWindowsMedia()
{
    tone("b", "Windows", "Pop", "wma");
    m_dialogs->expectButton("m_btnType");
    m_window->OpenInLocalMode({m_folder->path()});
    QTRY_COMPARE(part<QImageButton>("m_btnMusicAll")->btnText(), QString("All songs(1)"));
    QCOMPARE(told(), QString());
}

void TestWindowFoot::aSwitchEmptiesTheLine()
{
    switchToLocal();
    add({tone("a", "Ferry")});
    edit(0, "Midnight Ferry");
    clickIn(panel(), "m_btnApply");
    QVERIFY(!told().isEmpty());
    edit(0, "Left behind");
    click("m_btnLocalClean");
    QTRY_VERIFY(part<QWidget>("m_btniTunesClean")->isVisible());
    QCOMPARE(told(), QString());
    QCOMPARE(links(), QStringList());
}

void TestWindowFoot::aScanWithoutALibraryIsTold()
{
    QVERIFY(scan());
    QCOMPARE(told(), QString("No library file was found."));
}

void TestWindowFoot::aBrokenLibraryIsToldWithItsLine()
{
    addTrack(media("a", "Song"), "Song");
    writeLibrary();
    Fixtures::writeLibrary(m_library, library().replace("</plist>", "</oops>"));
    const int broken = library().left(library().indexOf("</oops>")).count('\n') + 1;
    QVERIFY(scan());
    QCOMPARE(told(), QString("The library file is broken (line %1).").arg(broken));
}

void TestWindowFoot::anEmptyLibraryIsTold()
{
    writeLibrary();
    QVERIFY(scan());
    QCOMPARE(told(), QString("The library file is empty."));
    addTrack(media("a", "Song"), "Song");
    writeLibrary();
    QVERIFY(scan());
    QCOMPARE(told(), QString());
}

void TestWindowFoot::aTrackThatCannotBeSavedCanBeTakenBack()
{
    const QString file = media("a", "Ferry");
    addTrack(file, "Ferry");
    writeLibrary();
    QVERIFY(scan());
    setMode(file, 0444);
    for (const char* title : {"Once", "Twice"}) {
        edit(0, title);
        clickIn(panel(), "m_btnApply");
        QCOMPARE(told(), QString("\"%1\" could not be saved: the file is read-only.").arg(title));
    }
    clickLink("Show what the file says");
    QCOMPARE(panel()->findChild<RetractLabel*>("m_titleName")->getName(), QString("Ferry"));
    QCOMPARE(QByteArray(songs().first()->track->name), QByteArray("Ferry"));
    setMode(file, 0644);
    edit(0, "Thrice");
    clickIn(panel(), "m_btnApply");
    QCOMPARE(told(), QString("Saved \"Thrice\"."));
}

void TestWindowFoot::tracksTakenOutAreTold()
{
    const QString file = media("a", "Same");
    for (int i = 0; i < 3; ++i)
        addTrack(file, "Same");
    writeLibrary();
    QVERIFY(scan());
    click("m_btnMusicDuplicate");
    clickRow("m_dupMusicListView", 0);
    clickIn(part<QWidget>("m_dupMusicDetailedWidget"), "m_btnClearAll");
    QCOMPARE(told(), QString("2 tracks taken out of the library; their files stay."));
}

void TestWindowFoot::whatNoProgramOpensIsTold()
{
    switchToLocal();
    QFile::copy(tone("a", "Same"), m_folder->filePath("b.mp3"));
    add({m_folder->path()});
    click("m_btnMusicDuplicate");
    clickRow("m_dupMusicListView", 0);
    const QByteArray path = qgetenv("PATH");
    qputenv("PATH", QFile::encodeName(m_folder->path())); // where nothing is
    m_window->SlotHomeMenu();
    const QString home = told();
    m_window->SlotHelpMenu();
    const QString help = told();
    clickIn(m_window->findChild<DupMusicbarWidget*>(), "m_btnOpenPath");
    const QString folder = told();
    qputenv("PATH", path);
    QCOMPARE(home, QString("No program was found that opens web pages."));
    QCOMPARE(help, QString("No program was found that opens help pages."));
    QCOMPARE(folder, QString("No program was found that opens folders."));
}

void TestWindowFoot::aSongWithoutASoundDeviceIsTold()
{
    switchToLocal();
    add({tone("a", "Ferry")});
    clickRow("m_allMusicListView", 0, true);
    QTRY_COMPARE(played(), QString("00::01"));
    QCOMPARE(told(), QString());                                        // silence was asked for
    qputenv("MELODRIFT_AUDIO_OUTPUT", "pcm:/no/such/folder/sound.wav"); // as a device that does not open
    clickRow("m_allMusicListView", 0, true);
    QTRY_COMPARE(told(), QString("There is no sound device: the song runs silently."));
    qputenv("MELODRIFT_AUDIO_OUTPUT", "null");
}

QTEST_MAIN(TestWindowFoot)
#include "tst_windowfoot.moc"
