// What the middle of the window says while there is nothing else to see there.
#include "collection/formats.h"
#include "footfixture.h"
#include "slowdisk.h"

#include <QFileDialog>
#include <QWindow>

class TestFirstSight : public FootFixture
{
    Q_OBJECT

private slots:
    void initTestCase() { start(); }
    void init() { prepareFoot(); }
    void cleanup() { clearFoot(); }

    void theLibraryIsNamedBeforeAScan();
    void aLibraryThatIsNowhereIsToldOf();
    void usualPlacesAreNamed();
    void anotherLibraryIsChosen();
    void keysChooseALibrary();
    void aDiskThatDoesNotAnswerHoldsUpNobody();
    void aLibraryWithoutSongsSaysSo();
    void aTidyCollectionIsPraised_data();
    void aTidyCollectionIsPraised();
    void whatIsClearedIsPraised();
    void whatIsNotScannedSaysWhatToPress();
    void theMouseReachesTheViewBelow();
    void everythingFits_data();
    void everythingFits();
    void theDropZoneNamesWhatADropTakes();

private:
    QString said() const
    {
        const auto* notice = part<QWidget>("m_viewNotice");
        return notice->isVisible() ? notice->accessibleName() : QString();
    }
    QString heading() const { return said().section('\n', 0, 0); }
    const QWidget* libraryButton() const { return part<QWidget>("m_btnLibrary"); }
    /// The user comes back from another program.
    void comeBack() const
    {
        QApplication::setActiveWindow(nullptr);
        QApplication::setActiveWindow(m_window.get());
    }
    /// Answers the next dialog with a file, or with none.
    void expectChoice(const QString& file);
    void writeOneSong(const QString& path);
};

void TestFirstSight::expectChoice(const QString& file)
{
    m_dialogs->expect([file](QWidget* widget) {
        auto* const dialog = qobject_cast<QFileDialog*>(widget);
        QVERIFY(dialog);
        QCOMPARE(dialog->windowTitle(), QString("Choose library file"));
        auto* const name = dialog->findChild<QLineEdit*>("fileNameEdit");
        QCOMPARE(name->text(), QString());
        if (file.isEmpty())
            return dialog->reject();
        name->setText(file);
        QTest::keyClick(name, Qt::Key_Return);
    });
}

void TestFirstSight::writeOneSong(const QString& path)
{
    m_tracks.clear();
    addTrack(media("song", "Song"), "Song");
    Fixtures::writeLibrary(path, Fixtures::itunesLibrary(m_tracks));
}

void TestFirstSight::theLibraryIsNamedBeforeAScan()
{
    writeOneSong(m_library);
    comeBack();
    QTRY_COMPARE(heading(), QString("Start Scan reads this library"));
    const QFileInfo file(m_library);
    QCOMPARE(said().section('\n', 1), m_library + '\n' + QIOrvoUtil::size2String(quint64(file.size())) +
                                          ", changed " + file.lastModified().toString("yyyy-MM-dd hh:mm"));
    QVERIFY(libraryButton()->isVisible());
    click("m_btnMusicDuplicate"); // no view has more to say
    QCOMPARE(heading(), QString("Start Scan reads this library"));
    QVERIFY(scan());
    click("m_btnMusicAll");
    QCOMPARE(said(), QString());
    QVERIFY(!libraryButton()->isVisible());
}

void TestFirstSight::aLibraryThatIsNowhereIsToldOf()
{
    QTRY_COMPARE(said(), "No music library was found\n" + m_library + "\nThere is no such file.");
    QVERIFY(libraryButton()->isVisible());
}

void TestFirstSight::usualPlacesAreNamed()
{
#ifndef Q_OS_LINUX
    QSKIP("the folders are the system's");
#endif
    closeWindow();
    SlowDisk home(m_folder->path());
    home.answer();
    m_window = std::make_unique<MainWindow>();
    m_window->show();
    const QString music = m_folder->filePath("Music");
    QTRY_COMPARE(said(), "No music library was found\nLooked in these folders:\n" + music + "/iTunes\n" +
                             music + "/Music\n" + music);
    QDir().mkpath(music);
    writeOneSong(music + "/Library.xml");
    comeBack();
    QTRY_COMPARE(said().section('\n', 1, 1), music + "/Library.xml");
}

void TestFirstSight::anotherLibraryIsChosen()
{
    const QString other = m_folder->filePath("Other.xml");
    writeOneSong(other);
    QTRY_COMPARE(heading(), QString("No music library was found"));
    expectChoice(QString());
    click("m_btnLibrary");
    QTRY_COMPARE(heading(), QString("No music library was found"));
    expectChoice(other);
    click("m_btnLibrary");
    QTRY_COMPARE(heading(), QString("Start Scan reads this library"));
    QCOMPARE(said().section('\n', 1, 1), other);
    QVERIFY(scan());
    QCOMPARE(songs().size(), 1);
    QVERIFY(m_dialogs->texts.isEmpty());
    setITunesLibraryOption(nullptr); // it holds for the run
}

void TestFirstSight::keysChooseALibrary()
{
    QTRY_COMPARE(heading(), QString("No music library was found"));
    QApplication::setActiveWindow(m_window.get());
    for (int i = 0; i < 20 && !libraryButton()->hasFocus(); ++i)
        QTest::keyClick(m_window->windowHandle(), Qt::Key_Tab);
    QVERIFY(libraryButton()->hasFocus());
    bool asked = false;
    m_dialogs->expect([&asked](QWidget* dialog) {
        asked = qobject_cast<QFileDialog*>(dialog);
        dialog->close();
    });
    QTest::keyClick(m_window->windowHandle(), Qt::Key_Space);
    QVERIFY(asked);
}

void TestFirstSight::aDiskThatDoesNotAnswerHoldsUpNobody()
{
#ifndef Q_OS_LINUX
    QSKIP("the folders are the system's");
#endif
    closeWindow();
    const QString other = m_folder->filePath("Other.xml");
    writeOneSong(other);
    SlowDisk disk(m_folder->path());
    m_window = std::make_unique<MainWindow>();
    m_window->show();
    QTRY_COMPARE(said(), QStringLiteral("Looking for your music library…"));
    click("m_btnMusicUndefined");
    QVERIFY(part<QWidget>("m_allMusicListView")->isVisible());
    QCOMPARE(said(), QStringLiteral("Looking for your music library…"));
    expectChoice(other);
    click("m_btnLibrary");
    QTRY_COMPARE(said().section('\n', 1, 1), other);
    setITunesLibraryOption(nullptr);
    comeBack();
    QTest::qWait(0);
    m_window.reset(); // ends though a look does not
    disk.answer();
}

void TestFirstSight::aLibraryWithoutSongsSaysSo()
{
    Fixtures::writeLibrary(m_library, Fixtures::itunesLibrary({}));
    QVERIFY(scan());
    QTRY_COMPARE(heading(), QString("There are no songs in this library"));
    QVERIFY(libraryButton()->isVisible());
    const QString other = m_folder->filePath("Other.xml");
    writeOneSong(other);
    expectChoice(other);
    click("m_btnLibrary");
    QTRY_COMPARE(heading(), QString("Start Scan reads this library"));
    setITunesLibraryOption(nullptr);
}

void TestFirstSight::aTidyCollectionIsPraised_data()
{
    QTest::addColumn<bool>("local");
    QTest::newRow("local") << true;
    QTest::newRow("iTunes") << false;
}

void TestFirstSight::aTidyCollectionIsPraised()
{
    QFETCH(bool, local);
    if (local) {
        switchToLocal();
        add({tone("a", "Anchor"), tone("b", "Beacon")});
    } else {
        writeOneSong(m_library);
        QVERIFY(scan());
    }
    for (const char* display : {"m_btnTableDisplay", "m_btnGridDisplay"}) {
        click(display);
        click("m_btnMusicUndefined");
        QCOMPARE(heading(), QString("No undefined songs. Well tagged."));
        click("m_btnMusicDuplicate");
        QCOMPARE(heading(), QString("No duplicates. Well tidied."));
        click("m_btnMusicAll");
        QCOMPARE(said(), QString());
    }
}

void TestFirstSight::whatIsClearedIsPraised()
{
    switchToLocal();
    add({tone("a", "Anchor"), tone("b", "Anchor")});
    click("m_btnMusicDuplicate");
    QCOMPARE(said(), QString());
    clickRow("m_dupMusicListView", 0);
    m_dialogs->expect([](QWidget*) {}); // the waiting dialog closes itself
    click("m_btnClearAll");
    QCOMPARE(heading(), QString("No duplicates. Well tidied."));
    clickLink("Undo");
    QTRY_COMPARE(said(), QString());
}

void TestFirstSight::whatIsNotScannedSaysWhatToPress()
{
    switchToLocal();
    QCOMPARE(said(), QString()); // the drop zone says it all
    part<CenterWidget>("m_middleMusicWidget")
        ->TakeDroppedPaths({tone("a", "Anchor")}); // its message is closed
    click("m_btnMusicUndefined");
    QCOMPARE(heading(), QString("Not scanned yet"));
    click("m_btnMusicDuplicate");
    QVERIFY(said().contains("Press Start Scan"));
    QVERIFY(scan());
    click("m_btnMusicDuplicate");
    QCOMPARE(heading(), QString("No duplicates. Well tidied."));
}

void TestFirstSight::theMouseReachesTheViewBelow()
{
    writeOneSong(m_library);
    QVERIFY(scan());
    click("m_btnTableDisplay");
    click("m_btnMusicUndefined");
    QApplication::setActiveWindow(m_window.get());
    part<QWidget>("m_btnStarScan")->setFocus();
    const auto* notice = part<QWidget>("m_viewNotice");
    QTest::mouseClick(m_window->windowHandle(), Qt::LeftButton, Qt::NoModifier,
                      notice->mapTo(m_window.get(), notice->rect().center()));
    QVERIFY(part<QWidget>("m_viewFocus")->hasFocus());
}

void TestFirstSight::everythingFits_data()
{
    QTest::addColumn<QSize>("size");
    for (const QSize size : {QSize(1000, 700), QSize(1120, 713), QSize(1920, 1080)})
        QTest::addRow("%dx%d", size.width(), size.height()) << size;
}

void TestFirstSight::everythingFits()
{
    QFETCH(QSize, size);
    closeWindow();
    const QString folder = m_folder->filePath(QString(100, 'x') + '/' + QString(100, 'y'));
    QDir().mkpath(folder);
    const QString library = folder + "/Library.xml";
    qputenv("MELODRIFT_ITUNES_LIBRARY", QFile::encodeName(library));
    writeOneSong(library);
    m_window = std::make_unique<MainWindow>();
    m_window->resize(size);
    m_window->show();
    QTRY_COMPARE(heading(), QString("Start Scan reads this library"));
    const auto place = [this](const char* name) {
        return QRect(part<QWidget>(name)->mapTo(m_window.get(), QPoint()), part<QWidget>(name)->size());
    };
    const QRect notice = place("m_viewNotice");
    QVERIFY(notice.contains(place("m_btnLibrary")));
    QVERIFY(notice.top() >= place("m_findStrip").bottom());
    QVERIFY(notice.left() >= place("m_leftMusicWidget").right());
    QCOMPARE(notice.right(), size.width() - 331);
    QCOMPARE(notice.bottom(), size.height() - 27);
    // Nothing comes to the sides, however long the path is.
    const QImage picture =
        part<QWidget>("m_viewNotice")->grab().toImage().convertToFormat(QImage::Format_RGB32);
    const QRgb paper = picture.pixel(0, 0);
    for (int y = 0; y < picture.height(); ++y)
        for (const int x : {1, 20, picture.width() - 21, picture.width() - 2})
            QCOMPARE(picture.pixel(x, y), paper);
}

/// One word for each, and none for WMA.
void TestFirstSight::theDropZoneNamesWhatADropTakes()
{
    switchToLocal();
    auto* const center = part<CenterWidget>("m_middleMusicWidget");
    const QRect open = part<QWidget>("m_btnOpen")->geometry();
    const QImage line = center->grab(QRect(open.center().x() - 200, open.top() - 66, 400, 16)).toImage();
    int words = 0;
    int sinceInk = line.width();
    for (int x = 0; x < line.width(); ++x) {
        bool ink = false;
        for (int y = 0; y < line.height(); ++y)
            ink = ink || qGray(line.pixel(x, y)) < 180;
        words += ink && sinceInk > 8 * line.devicePixelRatio() ? 1 : 0;
        sinceInk = ink ? 0 : sinceInk + 1;
    }
    QCOMPARE(words, Formats::dropped().size());
}

QTEST_MAIN(TestFirstSight)
#include "tst_firstsight.moc"
