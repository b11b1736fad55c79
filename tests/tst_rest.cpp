#include "audiocore/tagitem.h"
#include "audiofile.h"
#include "centerwidget.h"
#include "common/footline.h"
#include "common/qsliderctrl.h"
#include "dupmusicbarwidget.h"
#include "fixtures.h"
#include "guidriver.h"
#include "itunesfixture.h"
#include "mainwindow.h"
#include "parts.h"
#include "pathlistwindow.h"
#include "playsongwidget.h"
#include "programwindow.h"
#include "restwatch.h"
#include "startup.h"
#include "windowfixture.h"

#include <QComboBox>
#include <QDir>
#include <QHeaderView>
#include <QLineEdit>
#include <QListView>
#include <QMenuBar>
#include <QTableView>
#include <QTemporaryDir>

/// Once the last event is over nothing runs in the program, whatever it shows.
class TestRest : public WindowFixture
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void theStart();
    void theLocalModeBeforeFiles();
    void theITunesModeAgain();
    void songsInTheGrid();
    void songsInTheTable();
    void nothingFoundInOrder();
    void aSong();
    void editMode();
    void theGenres();
    void aGroupOfFiftyRows();
    void theSongCard();
    void aPausedSong();
    void aFinishedSong();
    void manySongsPlayed();
    void aMessage();
    void theAboutBox();
    void theConfirmation();
    void theFileDialog();
    void aScannedLibrary();
    void theFootLine();
    void theListOfPaths();

    void paintingPlacesNothing();
    void onePaintingBringsNoOther();

private:
    void switchToLocal() const;
    void showSongs() const;
    void showSong() const;
    void showGroup() const;
    void playFirstRow() const;
    QImageButton* rowButton(int row, const char* name) const;
    static PlaySongWidget* player() { return findWindow<PlaySongWidget>(); }
    /// Runs what opens a dialog; whether the application rests while the dialog is open, which is then
    /// closed.
    bool restsInDialog(const char* className, const std::function<void()>& open);

    QTemporaryDir m_music;
    std::unique_ptr<RestWatch> m_watch;
};

#define VERIFY_REST() QVERIFY2(m_watch->rests(), qPrintable(m_watch->happened()))

void TestRest::initTestCase()
{
    Startup::afterApplication();
    const QByteArray cover = Fixtures::jpeg(60, 60, 4);
    for (int song = 0; song < 53; ++song) {
        const QString path = Fixtures::copyTone("mp3", m_music.path(),
                                                QStringLiteral("%1").arg(song, 2, 10, QLatin1Char('0')));
        const QString title = song < 50 ? QStringLiteral("Same") : QStringLiteral("Song %1").arg(song);
        AudioFile::write(path, {{TAG_TITLE, title}, {TAG_ARTIST, "A"}, {TAG_ALBUM, "B"}}, &cover);
    }
}

void TestRest::init()
{
    qputenv("MELODRIFT_ITUNES_LIBRARY", m_music.filePath("none.xml").toUtf8());
    m_watch = std::make_unique<RestWatch>();
    m_window = makeProgramWindow();
    m_window->show();
    QVERIFY(QTest::qWaitForWindowActive(m_window.get(), patience));
}

void TestRest::cleanup()
{
    m_watch.reset();
    closeWindow();
}

void TestRest::switchToLocal() const
{
    click("m_btniTunesClean");
    QTRY_VERIFY(part<QWidget>("m_btnLocalClean")->isVisible());
}

void TestRest::showSongs() const
{
    DialogDriver dialogs;
    dialogs.expectButton("m_btnType");
    switchToLocal();
    part<CenterWidget>("m_middleMusicWidget")->TakeDroppedPaths({m_music.path()});
    QCOMPARE(part<QImageButton>("m_btnMusicAll")->btnText(), QString("All songs(53)"));
    m_window->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(m_window.get(), patience));
}

void TestRest::showSong() const
{
    showSongs();
    clickRow(part<QListView>("m_allMusicListView"));
    QVERIFY(part<QWidget>("m_musicDetailedWidget")->isVisible());
}

void TestRest::showGroup() const
{
    showSongs();
    click("m_btnMusicDuplicate");
    clickRow(part<QListView>("m_dupMusicListView"));
    QCOMPARE(m_window->findChildren<DupMusicbarWidget*>().size(), 50);
}

QImageButton* TestRest::rowButton(int row, const char* name) const
{
    return m_window->findChildren<DupMusicbarWidget*>().at(row)->findChild<QImageButton*>(name);
}

void TestRest::playFirstRow() const
{
    showGroup();
    QTest::mouseClick(rowButton(0, "m_btnPlayMusic"), Qt::LeftButton);
    QVERIFY(player() && player()->isVisible());
}

bool TestRest::restsInDialog(const char* className, const std::function<void()>& open)
{
    bool rested = false;
    QTimer::singleShot(0, this, [&] {
        QWidget* const dialog = QApplication::activeModalWidget();
        const bool opened =
            dialog && dialog->inherits(className) && QTest::qWaitForWindowActive(dialog, patience);
        rested = opened && m_watch->rests();
        if (dialog)
            dialog->close();
    });
    open();
    return rested;
}

void TestRest::theStart()
{
    VERIFY_REST();
}

void TestRest::theLocalModeBeforeFiles()
{
    switchToLocal();
    QVERIFY(part<QWidget>("m_btnOpen")->isVisible());
    VERIFY_REST();
}

void TestRest::theITunesModeAgain()
{
    switchToLocal();
    click("m_btnLocalClean");
    QTRY_VERIFY(part<QWidget>("m_btniTunesClean")->isVisible());
    VERIFY_REST();
}

void TestRest::songsInTheGrid()
{
    showSongs();
    QVERIFY(part<QWidget>("m_allMusicListView")->isVisible());
    VERIFY_REST();
}

void TestRest::songsInTheTable()
{
    showSongs();
    click("m_btnTableDisplay");
    QVERIFY(part<QWidget>("m_allMusicTableView")->isVisible());
    VERIFY_REST();
}

void TestRest::nothingFoundInOrder()
{
    showSongs();
    click("m_btnTableDisplay");
    auto* table = part<QTableView>("m_allMusicTableView");
    QTest::mouseClick(table->horizontalHeader()->viewport(), Qt::LeftButton, Qt::NoModifier, QPoint(20, 10));
    VERIFY_REST();
    QTest::keyClicks(part<QLineEdit>("m_findField"), "nowhere");
    QCOMPARE(table->model()->rowCount(), 0);
    VERIFY_REST();
}

void TestRest::aSong()
{
    showSong();
    VERIFY_REST();
}

void TestRest::editMode()
{
    showSong();
    click("m_btnEdit");
    auto* editor = part<QLineEdit>("m_lineTitle");
    QVERIFY(editor->hasFocus());
    VERIFY_REST();
    // The place where the next letter goes is seen all the same.
    const QImage atTheStart = editor->grab().toImage();
    QTest::keyClick(editor, Qt::Key_End);
    QVERIFY(editor->grab().toImage() != atTheStart);
    QTest::keyClick(editor, Qt::Key_X);
    VERIFY_REST();
}

void TestRest::theGenres()
{
    showSong();
    click("m_btnEdit");
    part<QComboBox>("m_comboGenre")->showPopup();
    VERIFY_REST();
    part<QComboBox>("m_comboGenre")->hidePopup();
}

void TestRest::aGroupOfFiftyRows()
{
    showGroup();
    VERIFY_REST();
}

void TestRest::theSongCard()
{
    showGroup();
    QTest::mouseClick(rowButton(0, "m_btnShowInfo"), Qt::LeftButton);
    VERIFY_REST();
}

void TestRest::aPausedSong()
{
    playFirstRow();
    player()->SlotOnBtnPause();
    m_watch->setTimersAllowed();
    VERIFY_REST();
}

void TestRest::aFinishedSong()
{
    playFirstRow();
    QTRY_VERIFY(player()->findChild<QImageButton*>("m_btnPlay")->isVisible());
    m_watch->setTimersAllowed();
    VERIFY_REST();
}

void TestRest::manySongsPlayed()
{
    playFirstRow();
    for (int song = 1; song < 100; ++song)
        QTest::mouseClick(rowButton(song % 2, "m_btnPlayMusic"), Qt::LeftButton);
    player()->SlotOnBtnPause();
    m_watch->setTimersAllowed();
    VERIFY_REST();
}

void TestRest::aMessage()
{
    switchToLocal();
    const bool rested = restsInDialog(
        "MessageDialog", [] { MessageDialog::notify(QStringLiteral("A message"), "button_ok.png", false); });
    QVERIFY2(rested, qPrintable(m_watch->happened()));
}

void TestRest::theAboutBox()
{
    const bool rested = restsInDialog("IntroduceThisSofeDialog", [this] { m_window->SlotAboutMenu(); });
    QVERIFY2(rested, qPrintable(m_watch->happened()));
}

void TestRest::theConfirmation()
{
    showGroup();
    const bool rested = restsInDialog("DeleteDupMusicInfoDlg", [this] { click("m_btnClearOne"); });
    QVERIFY2(rested, qPrintable(m_watch->happened()));
}

void TestRest::theFileDialog()
{
    switchToLocal();
    const bool rested = restsInDialog("QFileDialog", [this] { click("m_btnOpen"); });
    QVERIFY2(rested, qPrintable(m_watch->happened()));
}

void TestRest::aScannedLibrary()
{
    const QString library = m_music.filePath("library.xml");
    QVector<Fixtures::ITunesTrack> tracks;
    for (int track = 0; track < 20; ++track)
        tracks.append(
            Fixtures::itunesTrack(track, m_music.filePath(QStringLiteral("%1.mp3").arg(track + 10))));
    Fixtures::writeLibrary(library, Fixtures::itunesLibrary(tracks));
    qputenv("MELODRIFT_ITUNES_LIBRARY", library.toUtf8());
    QVERIFY(scan());
    QCOMPARE(part<QImageButton>("m_btnMusicAll")->btnText(), QString("All songs(20)"));
    VERIFY_REST();
    click("m_btnMusicUndefined"); // there are none, which the view says
    QVERIFY(part<QWidget>("m_viewNotice")->isVisible());
    VERIFY_REST();
}

/// What stands elsewhere in a window of another size stands there before it is painted.
void TestRest::theFootLine()
{
    showSong();
    auto* line = part<FootLine>("m_footLine");
    line->tell({QString(400, QLatin1Char('x')), true, {{"Show", [] {}}, {"Undo", [] {}}}});
    VERIFY_REST();
}

void TestRest::theListOfPaths()
{
    PathListWindow::open(*m_window, {"/one", "/two"});
    QVERIFY(m_window->findChild<QWidget*>("m_list")->isVisible());
    VERIFY_REST();
}

void TestRest::paintingPlacesNothing()
{
    const auto resizeThrough = [this] {
        for (const QSize& size : {QSize(1000, 700), QSize(1500, 900), QSize(1120, 713)}) {
            m_window->resize(size);
            QTest::qWait(50);
        }
    };
    resizeThrough();
    switchToLocal();
    resizeThrough();
    click("m_btnLocalClean");
    QTRY_VERIFY(part<QWidget>("m_btniTunesClean")->isVisible());
    showGroup();
    resizeThrough();
    QCOMPARE(m_watch->placedWhilePainting, QStringList());
}

void TestRest::onePaintingBringsNoOther()
{
    showSong();
    VERIFY_REST();
    m_watch->forget();
    m_window->update();
    QTest::qWait(1000);
    QCOMPARE(m_watch->paintings(m_window.get()), 1);
    for (const QWidget* widget : m_window->findChildren<QWidget*>())
        QVERIFY2(m_watch->paintings(widget) <= 1, qPrintable(widget->objectName()));
    QVERIFY2(!m_watch->happened().contains("LayoutRequest"), qPrintable(m_watch->happened()));
}

int main(int argc, char* argv[])
{
    TestRest::initMain();
    const QApplication application(argc, argv);
    TestRest test;
    return runPart(test, QApplication::arguments());
}
#include "tst_rest.moc"
