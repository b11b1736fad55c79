#include "common/qimagebutton.h"
#include "common/retractlabel.h"
#include "duplicatemusicdetailedwidget.h"
#include "dupmusicbarwidget.h"
#include "fixtures.h"
#include "folderopener.h"
#include "guidriver.h"
#include "loggedlines.h"
#include "playsongwidget.h"
#include "showmusicinfowidget.h"
#include "songfixtures.h"
#include "startup.h"

#include <QCheckBox>
#include <QScrollArea>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

namespace {
/// A file browser in place of the desktop's for one scope, which notes in the folder what it is asked for.
class FileBrowser
{
public:
    explicit FileBrowser(const QString& folder) : m_note(folder + "/note"), m_path(qgetenv("PATH"))
    {
        QFile::remove(m_note);
        const QByteArray note = m_note.toUtf8();
        const QString program = Fixtures::saveBytes("#!/bin/sh\nprintf '%s|' \"$@\" > '" + note +
                                                        ".part'\nmv '" + note + ".part' '" + note + "'\n",
                                                    folder + "/xdg-open");
        QFile::setPermissions(program, QFile::ReadOwner | QFile::ExeOwner | QFile::WriteOwner);
        qputenv("PATH", folder.toUtf8() + ':' + m_path);
    }
    ~FileBrowser() { qputenv("PATH", m_path); }
    Q_DISABLE_COPY(FileBrowser)

    bool wasAsked() const { return QFile::exists(m_note); }
    /// Each with a "|" behind it.
    QString arguments() const { return QString::fromUtf8(Fixtures::readBytes(m_note)); }

private:
    QString m_note;
    QByteArray m_path;
};
} // namespace

class TestDuplicateMusicDetailedWidget : public QObject
{
    Q_OBJECT

public:
    static void initMain()
    {
        qputenv("MELODRIFT_AUDIO_OUTPUT", "null");
        Startup::beforeApplication();
    }

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void aRowShowsALocalSong();
    void aRowShowsATrackAndKeepsTheFormat();
    void timesAreDoubledColons_data();
    void timesAreDoubledColons();
    void rowsAreLaidOutAsTheyShould();
    void theCheckBoxTurns();
    void theFirstRowIsKept();
    void anotherGroupReplacesTheRows();
    void noGroupForgetsTheRows();
    void playingARowShowsItsStopButton();
    void anotherRowTakesOver();
    void stoppingARowPauses();
    void aQuickStopAfterPlayIsHeard();
    void theWindowTellsTheRow();
    void replacedRowsLeaveThePlaybackAlone();
    void aTableSongLeavesRowsAlone();
    void theCardOpensAndClosesWithTheRow();
    void theFolderIsOneArgument_data();
    void theFolderIsOneArgument();
    void whatIsNoFolderIsNotOpened_data();
    void whatIsNoFolderIsNotOpened();
    void aMissingFileBrowserIsLogged();
    void aSongInNoFolderOpensNone();
    void buttonsGoWithTheLastGroup();
    void clearingAsksOnceAndForAll();
    void whoCancelsIsAskedAgain();
    void cancellingDeletesNothing();
    void noStrayDoubleClickDeletes();
    void clearingWalksFromTheLastRow();
    void theLastRowGoes();
    void rowsThatLostTheirSongsAreShownAnew();
    void clearAllTakesThisGroupFirst();
    void thePanelIsDrawn();

private:
    QList<QMusicInfo*> group(int songs);
    QList<DupMusicbarWidget*> rows() const { return m_panel->findChildren<DupMusicbarWidget*>(); }
    template <typename T>
    static T* child(const QWidget* parent, const char* name)
    {
        return parent->findChild<T*>(name);
    }
    static void click(const QWidget* parent, const char* button)
    {
        QTest::mouseClick(child<QImageButton>(parent, button), Qt::LeftButton);
    }
    static bool stops(const DupMusicbarWidget* row)
    {
        const bool stop = !child<QImageButton>(row, "m_btnStopMusic")->isHidden();
        if (child<QImageButton>(row, "m_btnPlayMusic")->isHidden() != stop)
            qFatal("both buttons at once");
        return stop;
    }
    PlaySongWidget* player() const;

    QTemporaryDir m_folder;
    std::vector<std::unique_ptr<Fixtures::Song>> m_songs;
    std::unique_ptr<Fixtures::ModeGuard> m_mode;
    std::unique_ptr<DuplicateMusicDetailedWidget> m_panel;
    std::unique_ptr<DialogDriver> m_dialogs;
};

void TestDuplicateMusicDetailedWidget::initTestCase()
{
    Startup::afterApplication();
    Fixtures::genericCover();
}

void TestDuplicateMusicDetailedWidget::init()
{
    m_mode = std::make_unique<Fixtures::ModeGuard>(true);
    m_panel = std::make_unique<DuplicateMusicDetailedWidget>();
    m_panel->resize(330, 572);
    m_dialogs = std::make_unique<DialogDriver>();
}

void TestDuplicateMusicDetailedWidget::cleanup()
{
    m_panel.reset();
    m_dialogs.reset();
    m_mode.reset();
    m_songs.clear();
}

QList<QMusicInfo*> TestDuplicateMusicDetailedWidget::group(int songs)
{
    QList<QMusicInfo*> list;
    for (int i = 0; i < songs; ++i) {
        m_songs.push_back(Fixtures::makeSong(true));
        LocalMusicInfo& local = *m_songs.back()->info.localInfo;
        local.title = QStringLiteral("Song %1").arg(i);
        local.filePath = Fixtures::tone("wav", 2000);
        local.duration = 2000;
        local.format = QStringLiteral("WAV");
        list.append(&m_songs.back()->info);
    }
    return list;
}

PlaySongWidget* TestDuplicateMusicDetailedWidget::player() const
{
    for (QWidget* window : QApplication::topLevelWidgets())
        if (auto* found = qobject_cast<PlaySongWidget*>(window))
            return found;
    return nullptr;
}

void TestDuplicateMusicDetailedWidget::aRowShowsALocalSong()
{
    const auto song = Fixtures::makeSong(true);
    song->info.localInfo->bitrate = 191999;
    song->info.localInfo->duration = 247000;
    song->info.localInfo->format = QStringLiteral("FLAC");
    DupMusicbarWidget row;
    row.SetDupMusicInfo(&song->info);
    const auto text = [&](const char* label) { return child<RetractLabel>(&row, label)->getName(); };
    QCOMPARE(text("m_labelMusicName"), QString::fromUtf8("Täxt"));
    QCOMPARE(text("m_labelMusicArtist"), QStringLiteral("Artist"));
    QCOMPARE(text("m_labelMusicKbps"), QStringLiteral("191kbps"));
    QCOMPARE(text("m_labelTotalTime"), QStringLiteral("04::07"));
    QCOMPARE(text("m_labelMusicFormat"), QStringLiteral("FLAC"));
    song->info.localInfo->title = QStringLiteral("Other");
    row.SetDupMusicInfo(nullptr); // the same song, as it is now
    QCOMPARE(text("m_labelMusicName"), QStringLiteral("Other"));
}

void TestDuplicateMusicDetailedWidget::aRowShowsATrackAndKeepsTheFormat()
{
    const Fixtures::ModeGuard mode(false);
    const auto song = Fixtures::makeSong(false);
    song->record.bitRate = 320;
    song->record.duration = 61000;
    song->record.kind = "AAC audio file";
    DupMusicbarWidget row;
    row.SetDupMusicInfo(&song->info);
    QCOMPARE(child<RetractLabel>(&row, "m_labelMusicKbps")->getName(), QStringLiteral("320kbps"));
    QCOMPARE(child<RetractLabel>(&row, "m_labelTotalTime")->getName(), QStringLiteral("01::01"));
    QCOMPARE(child<RetractLabel>(&row, "m_labelMusicFormat")->getName(), QStringLiteral("mp3")); // oddity 10
}

void TestDuplicateMusicDetailedWidget::timesAreDoubledColons_data()
{
    QTest::addColumn<qint64>("milliseconds");
    QTest::addColumn<QString>("text");
    QTest::newRow("zero") << qint64(0) << "00::00";
    QTest::newRow("usual") << qint64(247999) << "04::07";
    QTest::newRow("longest") << qint64(3599999) << "59::59";
    QTest::newRow("an hour") << qint64(3600000) << "";
}

void TestDuplicateMusicDetailedWidget::timesAreDoubledColons()
{
    QFETCH(qint64, milliseconds);
    QFETCH(QString, text);
    QCOMPARE(DupMusicbarWidget().ConvertTime(milliseconds), text);
}

void TestDuplicateMusicDetailedWidget::rowsAreLaidOutAsTheyShould()
{
    DupMusicbarWidget row;
    const std::pair<const char*, QPoint> places[] = {
        {"m_btnPlayMusic", {230, 67}},  {"m_btnShowInfo", {260, 67}},      {"m_btnOpenPath", {290, 67}},
        {"m_btnStopMusic", {236, 73}},  {"m_labelMusicName", {38, 7}},     {"m_labelMusicArtist", {38, 37}},
        {"m_labelMusicKbps", {38, 62}}, {"m_labelMusicFormat", {130, 62}}, {"m_labelTotalTime", {265, 8}}};
    for (const auto& [name, place] : places) {
        QCOMPARE(child<QWidget>(&row, name)->pos(), place);
        QVERIFY2(row.rect().contains(child<QWidget>(&row, name)->geometry()), name);
    }
    const QImage render = row.grab().toImage();
    QCOMPARE(render.pixelColor(3, 50), QColor(231, 247, 255));
    QCOMPARE(render.pixelColor(3, render.height() - 1), QColor(170, 170, 170));
}

void TestDuplicateMusicDetailedWidget::theCheckBoxTurns()
{
    DupMusicbarWidget row;
    row.show();
    QVERIFY(!row.isKept());
    const QImage unchecked = child<QWidget>(&row, "m_btnIsDeleta")->grab().toImage();
    click(&row, "m_btnIsDeleta");
    QVERIFY(row.isKept());
    QVERIFY(child<QWidget>(&row, "m_btnIsDeleta")->grab().toImage() != unchecked);
    click(&row, "m_btnIsDeleta");
    QVERIFY(!row.isKept());
}

void TestDuplicateMusicDetailedWidget::theFirstRowIsKept()
{
    QList<QMusicInfo*> three = group(3);
    m_panel->SetDuplicateMusicDetailedInfo(&three);
    QVERIFY(m_panel->isVisible());
    QCOMPARE(rows().size(), 3);
    QCOMPARE(m_panel->keptSongs(), QList<QMusicInfo*>({three.first()}));
    for (int i = 0; i < 3; ++i)
        QCOMPARE(rows().at(i)->song(), three.at(i));
    QList<QMusicInfo*> one = group(1);
    m_panel->SetDuplicateMusicDetailedInfo(&one);
    QCOMPARE(m_panel->keptSongs(), one);
}

void TestDuplicateMusicDetailedWidget::anotherGroupReplacesTheRows()
{
    QList<QMusicInfo*> first = group(2);
    QList<QMusicInfo*> second = group(4);
    m_panel->SetDuplicateMusicDetailedInfo(&first);
    m_panel->SetDuplicateMusicDetailedInfo(&second);
    QCOMPARE(rows().size(), 4);
    QCOMPARE(rows().first()->song(), second.first());
}

void TestDuplicateMusicDetailedWidget::noGroupForgetsTheRows()
{
    QList<QMusicInfo*> songs = group(2);
    m_panel->SetDuplicateMusicDetailedInfo(&songs);
    m_panel->SetDuplicateMusicDetailedInfo(nullptr);
    QVERIFY(rows().isEmpty());
    QVERIFY(m_panel->keptSongs().isEmpty());
    m_panel->SlotDeleteSongWasSelected(); // nothing to walk over
}

void TestDuplicateMusicDetailedWidget::playingARowShowsItsStopButton()
{
    QList<QMusicInfo*> songs = group(2);
    m_panel->SetDuplicateMusicDetailedInfo(&songs);
    QVERIFY(!stops(rows().first()));
    click(rows().first(), "m_btnPlayMusic");
    QVERIFY(stops(rows().first()));
    QVERIFY(!stops(rows().last()));
    QVERIFY(player()->isVisible());
    QCOMPARE(child<RetractLabel>(player(), "m_labelTitle")->getName(), QStringLiteral("Song 0"));
}

void TestDuplicateMusicDetailedWidget::anotherRowTakesOver()
{
    QList<QMusicInfo*> songs = group(2);
    m_panel->SetDuplicateMusicDetailedInfo(&songs);
    click(rows().first(), "m_btnPlayMusic");
    click(rows().last(), "m_btnPlayMusic");
    QVERIFY(!stops(rows().first()));
    QVERIFY(stops(rows().last()));
    QCOMPARE(child<RetractLabel>(player(), "m_labelTitle")->getName(), QStringLiteral("Song 1"));
}

void TestDuplicateMusicDetailedWidget::stoppingARowPauses()
{
    QList<QMusicInfo*> songs = group(1);
    m_panel->SetDuplicateMusicDetailedInfo(&songs);
    click(rows().first(), "m_btnPlayMusic");
    QVERIFY(child<QWidget>(player(), "m_btnPause")->isVisible());
    click(rows().first(), "m_btnStopMusic");
    QVERIFY(!stops(rows().first()));
    QVERIFY(child<QWidget>(player(), "m_btnPlay")->isVisible());
}

/// The stop button comes in the place of the play button, so that both presses are one double click.
void TestDuplicateMusicDetailedWidget::aQuickStopAfterPlayIsHeard()
{
    QList<QMusicInfo*> songs = group(1);
    m_panel->SetDuplicateMusicDetailedInfo(&songs);
    const DupMusicbarWidget* row = rows().first();
    click(row, "m_btnPlayMusic");
    QVERIFY(stops(row));
    pressAsSecond(child<QWidget>(row, "m_btnStopMusic"));
    QVERIFY(!stops(row));
    QVERIFY(child<QWidget>(player(), "m_btnPlay")->isVisible());
    pressAsSecond(child<QWidget>(row, "m_btnPlayMusic"));
    QVERIFY(stops(row));
}

void TestDuplicateMusicDetailedWidget::theWindowTellsTheRow()
{
    QList<QMusicInfo*> songs = group(1);
    m_panel->SetDuplicateMusicDetailedInfo(&songs);
    click(rows().first(), "m_btnPlayMusic");
    click(player(), "m_btnPause");
    QVERIFY(!stops(rows().first()));
    click(player(), "m_btnPlay");
    QVERIFY(stops(rows().first()));
    player()->close();
    QVERIFY(!stops(rows().first()));
    click(rows().first(), "m_btnPlayMusic");
    QTRY_VERIFY(!stops(rows().first())); // the song has ended
}

void TestDuplicateMusicDetailedWidget::replacedRowsLeaveThePlaybackAlone()
{
    QList<QMusicInfo*> songs = group(2);
    QList<QMusicInfo*> others = group(2);
    m_panel->SetDuplicateMusicDetailedInfo(&songs);
    click(rows().first(), "m_btnPlayMusic");
    m_panel->SetDuplicateMusicDetailedInfo(&others);
    QVERIFY(player()->isVisible());
    QVERIFY(child<QWidget>(player(), "m_btnPause")->isVisible());
    click(player(), "m_btnPause"); // tells no row
    click(player(), "m_btnPlay");
    for (const DupMusicbarWidget* row : rows())
        QVERIFY(!stops(row));
}

void TestDuplicateMusicDetailedWidget::aTableSongLeavesRowsAlone()
{
    QList<QMusicInfo*> songs = group(2);
    m_panel->SetDuplicateMusicDetailedInfo(&songs);
    click(rows().first(), "m_btnPlayMusic");
    m_panel->SlotBeginToPlayTableViewMusic(songs.last());
    QCOMPARE(child<RetractLabel>(player(), "m_labelTitle")->getName(), QStringLiteral("Song 1"));
    click(player(), "m_btnPause");
    QVERIFY(stops(rows().first()));
}

void TestDuplicateMusicDetailedWidget::theCardOpensAndClosesWithTheRow()
{
    QList<QMusicInfo*> songs = group(2);
    m_panel->SetDuplicateMusicDetailedInfo(&songs);
    QCursor::setPos(500, 300);
    click(rows().first(), "m_btnShowInfo");
    auto* card = rows().first()->findChild<ShowMusicInfoWidget*>();
    QVERIFY(card && card->isVisible());
    QCOMPARE(card->pos(), QPoint(200, 300));
    QCOMPARE(card->findChild<RetractLabel*>("m_labName")->getName(), QStringLiteral("Song 0"));
    QCursor::setPos(10, 300);
    click(rows().first(), "m_btnShowInfo");
    card = rows().first()->findChild<ShowMusicInfoWidget*>();
    QCOMPARE(rows().first()->findChildren<ShowMusicInfoWidget*>().size(), 1);
    QCOMPARE(card->pos(), QPoint(0, 300)); // on the screen
    m_panel->SetDuplicateMusicDetailedInfo(nullptr);
    for (const QWidget* window : QApplication::topLevelWidgets())
        QVERIFY(!qobject_cast<const ShowMusicInfoWidget*>(window));
}

void TestDuplicateMusicDetailedWidget::theFolderIsOneArgument_data()
{
    QTest::addColumn<QString>("location"); // %1: a folder that is there
    QTest::addColumn<QString>("folder");
    QTest::newRow("plain") << "%1/music/a.mp3"
                           << "%1/music";
    QTest::newRow("blanks and quotes") << "%1/mu \"sic's -a x/a b.mp3"
                                       << "%1/mu \"sic's -a x";
    QTest::newRow("like an option") << "%1/-a/a.mp3"
                                    << "%1/-a";
    QTest::newRow("file URL") << "file://localhost%1/a%20b/c.mp3"
                              << "file://localhost%1/a%20b";
    QTest::newRow("file URL without a host") << "file://%1/a%20b/c.mp3"
                                             << "file://%1/a%20b";
}

void TestDuplicateMusicDetailedWidget::theFolderIsOneArgument()
{
    QFETCH(QString, location);
    QFETCH(QString, folder);
    location.replace("%1", m_folder.path());
    folder.replace("%1", m_folder.path());
    QCOMPARE(FolderOpener::folderOf(location), folder);
#ifdef Q_OS_LINUX
    for (const char* name : {"music", "mu \"sic's -a x", "-a", "a b"})
        QDir(m_folder.path()).mkdir(name);
    const FileBrowser browser(m_folder.path());
    QList<QMusicInfo*> songs = group(1);
    songs.first()->localInfo->filePath = location;
    m_panel->SetDuplicateMusicDetailedInfo(&songs);
    click(rows().first(), "m_btnOpenPath");
    QTRY_VERIFY(browser.wasAsked());
    QCOMPARE(browser.arguments(), folder + QLatin1Char('|'));
#endif
}

void TestDuplicateMusicDetailedWidget::whatIsNoFolderIsNotOpened_data()
{
    QTest::addColumn<QString>("path");
    QTest::newRow("nothing") << "%1/nowhere";
    QTest::newRow("a file") << "%1/file.desktop";
    QTest::newRow("a file as a URL") << "file://localhost%1/file.desktop";
    QTest::newRow("an option") << "--version";
    QTest::newRow("a relative path") << "-a";
    QTest::newRow("another scheme") << "smb://localhost%1";
    QTest::newRow("another machine") << "file://elsewhere%1";
}

void TestDuplicateMusicDetailedWidget::whatIsNoFolderIsNotOpened()
{
    QFETCH(QString, path);
    path.replace("%1", m_folder.path());
    QDir(m_folder.path()).mkdir("-a");
    Fixtures::saveBytes("[Desktop Entry]\n", m_folder.filePath("file.desktop"));
    const QString before = QDir::currentPath();
    QVERIFY(QDir::setCurrent(m_folder.path()));
    const FileBrowser browser(m_folder.path());
    const LoggedLines lines;
    FolderOpener::open(path);
    const QStringList log = LoggedLines::take();
    QDir::setCurrent(before);
    QCOMPARE(log.size(), 1);
    QVERIFY2(log.first().contains(path), qPrintable(log.first()));
}

void TestDuplicateMusicDetailedWidget::aMissingFileBrowserIsLogged()
{
    const QByteArray path = qgetenv("PATH");
    qputenv("PATH", m_folder.filePath("empty").toUtf8());
    const LoggedLines lines;
    FolderOpener::open(m_folder.path());
    qputenv("PATH", path);
    const QStringList log = LoggedLines::take();
    QCOMPARE(log.size(), 1);
    QVERIFY(log.first().contains(m_folder.path()));
}

void TestDuplicateMusicDetailedWidget::aSongInNoFolderOpensNone()
{
    const LoggedLines lines;
    QCOMPARE(FolderOpener::folderOf(QString()), QString());
    FolderOpener::open(QString());
    QCOMPARE(LoggedLines::take().size(), 1);
}

void TestDuplicateMusicDetailedWidget::buttonsGoWithTheLastGroup()
{
    QList<QMusicInfo*> songs = group(2);
    m_panel->SetDuplicateMusicDetailedInfo(&songs);
    const auto visible = [&] {
        return child<QWidget>(m_panel.get(), "m_btnClearOne")->isVisible() &&
               child<QWidget>(m_panel.get(), "m_btnClearAll")->isVisible();
    };
    QVERIFY(visible());
    m_panel->SlotSetDeleteBtn(3);
    QVERIFY(visible());
    m_panel->SlotSetDeleteBtn(0);
    QVERIFY(!visible());
    m_panel->SlotSetDeleteBtn(2);
    QVERIFY(!visible()); // only the next group brings them back
    m_panel->SetDuplicateMusicDetailedInfo(&songs);
    QVERIFY(visible());
}

void TestDuplicateMusicDetailedWidget::clearingAsksOnceAndForAll()
{
    QList<QMusicInfo*> songs = group(4);
    m_panel->SetDuplicateMusicDetailedInfo(&songs);
    QSignalSpy deleted(m_panel.get(), SIGNAL(emitDeleteDupMusicWasSelected(QMusicInfo*)));
    int asked = 0;
    m_dialogs->expect([&](QWidget* dialog) {
        ++asked;
        QCOMPARE(dialog->windowTitle(), QStringLiteral("Melodryft"));
        QCOMPARE(dialog->size(), QSize(441, 145));
        QCOMPARE(child<QWidget>(dialog, "m_checkBox")->pos(), QPoint(94, 60));
        QTest::mouseClick(child<QCheckBox>(dialog, "m_checkBox"), Qt::LeftButton, Qt::NoModifier, {8, 9});
        click(dialog, "m_btnOK");
    });
    click(m_panel.get(), "m_btnClearOne");
    QCOMPARE(asked, 1);
    QCOMPARE(deleted.size(), 3);
    m_panel->SetDuplicateMusicDetailedInfo(&songs);
    click(m_panel.get(), "m_btnClearOne"); // a dialog would be closed, and nothing deleted
    QCOMPARE(deleted.size(), 6);
}

void TestDuplicateMusicDetailedWidget::whoCancelsIsAskedAgain()
{
    QList<QMusicInfo*> songs = group(4);
    m_panel->SetDuplicateMusicDetailedInfo(&songs);
    QSignalSpy deleted(m_panel.get(), SIGNAL(emitDeleteDupMusicWasSelected(QMusicInfo*)));
    int asked = 0;
    for (const char* end : {"m_btnCancel", "escape", "m_btnOK"}) {
        m_dialogs->expect([&](QWidget* dialog) {
            ++asked;
            QVERIFY(!child<QCheckBox>(dialog, "m_checkBox")->isChecked());
            if (QByteArray(end) != "m_btnOK")
                QTest::mouseClick(child<QCheckBox>(dialog, "m_checkBox"), Qt::LeftButton, Qt::NoModifier,
                                  {8, 9});
            if (QByteArray(end) == "escape")
                QTest::keyClick(dialog, Qt::Key_Escape);
            else
                click(dialog, end);
        });
        QVERIFY(deleted.isEmpty());
        click(m_panel.get(), "m_btnClearOne");
    }
    QCOMPARE(asked, 3);
    QCOMPARE(deleted.size(), 3);
}

void TestDuplicateMusicDetailedWidget::cancellingDeletesNothing()
{
    QList<QMusicInfo*> songs = group(3);
    m_panel->SetDuplicateMusicDetailedInfo(&songs);
    QSignalSpy deleted(m_panel.get(), SIGNAL(emitDeleteDupMusicWasSelected(QMusicInfo*)));
    m_dialogs->expectButton("m_btnCancel");
    click(m_panel.get(), "m_btnClearOne");
    m_dialogs->expect([](QWidget* dialog) { QTest::keyClick(dialog, Qt::Key_Escape); });
    click(m_panel.get(), "m_btnClearOne");
    QCOMPARE(deleted.size(), 0);
    QCOMPARE(rows().size(), 3);
}

/// A double click begun elsewhere, whose second press falls on a button that deletes.
void TestDuplicateMusicDetailedWidget::noStrayDoubleClickDeletes()
{
    QList<QMusicInfo*> songs = group(3);
    m_panel->SetDuplicateMusicDetailedInfo(&songs);
    QSignalSpy deleted(m_panel.get(), SIGNAL(emitDeleteDupMusicWasSelected(QMusicInfo*)));
    for (const char* button : {"m_btnClearOne", "m_btnClearAll"}) {
        click(rows().first(), "m_btnPlayMusic");
        pressAsSecond(child<QWidget>(m_panel.get(), button));
        QVERIFY(m_dialogs->texts.isEmpty());
        QCOMPARE(deleted.size(), 0);
    }
    bool asked = false;
    m_dialogs->expect([&](QWidget* dialog) { // the first press opened it under the pointer
        asked = true;
        pressAsSecond(child<QWidget>(dialog, "m_btnOK"));
        QVERIFY(dialog->isVisible());
        click(dialog, "m_btnCancel");
    });
    click(m_panel.get(), "m_btnClearOne");
    QVERIFY(asked);
    QCOMPARE(deleted.size(), 0);
}

void TestDuplicateMusicDetailedWidget::clearingWalksFromTheLastRow()
{
    QList<QMusicInfo*> songs = group(4);
    const QList<QMusicInfo*> all = songs;
    m_panel->SetDuplicateMusicDetailedInfo(&songs);
    rows().at(2)->SlotOnBtnCheckBox(); // kept
    QList<QMusicInfo*> deleted;
    connect(m_panel.get(), &DuplicateMusicDetailedWidget::emitDeleteDupMusicWasSelected, this,
            [&](QMusicInfo* song) { deleted.append(song); });
    m_panel->SlotDeleteSongWasSelected();
    QCOMPARE(deleted, QList<QMusicInfo*>({all.at(3), all.at(1)}));
}

void TestDuplicateMusicDetailedWidget::theLastRowGoes()
{
    QList<QMusicInfo*> songs = group(3);
    m_panel->SetDuplicateMusicDetailedInfo(&songs);
    click(rows().first(), "m_btnPlayMusic");
    connect(m_panel.get(), &DuplicateMusicDetailedWidget::emitDeleteDupMusicWasSelected, this,
            [&] { songs.removeLast(); });
    m_panel->SlotDeleteSongWasSelected();
    QVERIFY(rows().isEmpty());
    QVERIFY(m_panel->keptSongs().isEmpty());
    m_panel->SlotDeleteSongWasSelected(); // its place is skipped
    QCOMPARE(songs.size(), 1);
    click(player(), "m_btnPause"); // the row that it would tell is gone
}

/// The pairing by position leaves rows whose songs are not those of the list any more.
void TestDuplicateMusicDetailedWidget::rowsThatLostTheirSongsAreShownAnew()
{
    QList<QMusicInfo*> songs = group(4);
    m_panel->SetDuplicateMusicDetailedInfo(&songs);
    rows().at(0)->SlotOnBtnCheckBox(); // to be deleted
    rows().at(1)->SlotOnBtnCheckBox(); // kept
    rows().at(2)->SlotOnBtnCheckBox(); // kept
    connect(m_panel.get(), &DuplicateMusicDetailedWidget::emitDeleteDupMusicWasSelected, this,
            [&] { songs.removeLast(); });
    m_panel->SlotDeleteSongWasSelected();
    QCOMPARE(songs.size(), 2);
    QCOMPARE(rows().size(), 2);
    for (int i = 0; i < 2; ++i)
        QCOMPARE(rows().at(i)->song(), songs.at(i));
}

void TestDuplicateMusicDetailedWidget::clearAllTakesThisGroupFirst()
{
    QList<QMusicInfo*> songs = group(3);
    m_panel->SetDuplicateMusicDetailedInfo(&songs);
    QStringList order;
    connect(m_panel.get(), &DuplicateMusicDetailedWidget::emitDeleteDupMusicWasSelected, this, [&] {
        songs.removeLast();
        order.append("one");
    });
    connect(m_panel.get(), &DuplicateMusicDetailedWidget::emitDeleteAllDupMusic, this,
            [&] { order.append("all"); });
    click(m_panel.get(), "m_btnClearAll"); // does not ask
    QCOMPARE(order, QStringList({"one", "one", "all"}));
    QVERIFY(child<QWidget>(m_panel.get(), "m_btnClearAll")->isHidden());
    QVERIFY(child<QWidget>(m_panel.get(), "m_btnClearOne")->isHidden());
}

void TestDuplicateMusicDetailedWidget::thePanelIsDrawn()
{
    QList<QMusicInfo*> songs = group(2);
    m_panel->SetDuplicateMusicDetailedInfo(&songs);
    const QImage render = m_panel->grab().toImage();
    QCOMPARE(render.pixelColor(0, 500), QColor(192, 192, 192));
    QCOMPARE(render.pixelColor(100, 400), QColor(255, 255, 255));
    QCOMPARE(render.pixelColor(4, 150), QColor(231, 247, 255)); // the second row
    for (const char* name : {"m_btnClearOne", "m_btnClearAll"}) {
        const auto* button = child<QWidget>(m_panel.get(), name);
        const QRect place(button->mapTo(m_panel.get(), QPoint()), button->size());
        QVERIFY2(m_panel->rect().contains(place), name);
    }
}

QTEST_MAIN(TestDuplicateMusicDetailedWidget)
#include "tst_duplicatemusicdetailedwidget.moc"
