#include "common/retractlabel.h"
#include "duplicatemusicdetailedwidget.h"
#include "dupmusicbarwidget.h"
#include "fixtures.h"
#include "folderopener.h"
#include "grouppanelfixture.h"
#include "guidriver.h"
#include "loggedlines.h"
#include "showmusicinfowidget.h"
#include "songfixtures.h"

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

class TestDuplicateMusicDetailedWidget : public GroupPanelFixture
{
    Q_OBJECT

private slots:
    void initTestCase() { start(); }
    void init() { prepare(); }
    void cleanup() { clear(); }

    void aRowShowsALocalSong();
    void aRowShowsATrackAndKeepsTheFormat();
    void timesAreDoubledColons_data();
    void timesAreDoubledColons();
    void rowsAreLaidOutAsTheyShould();
    void theBestCopyIsMarked();
    void theBestTrackIsMarked();
    void copiesThatAreAlikeHaveNoMark();
    void theMarkStandsBehindTheBitRate_data();
    void theMarkStandsBehindTheBitRate();
    void theTipTellsCopiesApart();
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
    void thePanelIsDrawn();
};

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

void TestDuplicateMusicDetailedWidget::theBestCopyIsMarked()
{
    QList<QMusicInfo*> songs = group(3);
    songs.at(0)->localInfo->format = QStringLiteral("MP3");
    songs.at(0)->localInfo->bitrate = 320000;
    songs.at(1)->localInfo->format = QStringLiteral("FLAC");
    songs.at(1)->localInfo->bitrate = 911000;
    songs.at(2)->localInfo->format = QStringLiteral("M4A");
    songs.at(2)->localInfo->bitrate = 256000;
    m_panel->SetDuplicateMusicDetailedInfo(&songs);
    QCOMPARE(markedRows(), QList<int>({1}));
    QCOMPARE(bestMark(rows().at(1))->toolTip(), QStringLiteral("Best sound of this group"));
    QCOMPARE(bestMark(rows().at(1))->accessibleName(), QStringLiteral("Best sound of this group"));
    QCOMPARE(m_panel->keptSongs(), QList<QMusicInfo*>({songs.first()})); // a hint alone
    songs = {songs.at(2), songs.at(0)};
    m_panel->SetDuplicateMusicDetailedInfo(&songs);
    QCOMPARE(markedRows(), QList<int>({0}));
}

void TestDuplicateMusicDetailedWidget::theBestTrackIsMarked()
{
    const Fixtures::ModeGuard mode(false);
    QList<QMusicInfo*> songs;
    for (const char* kind : {"MPEG audio file", "Apple Lossless audio file"}) {
        m_songs.push_back(Fixtures::makeSong(false));
        m_songs.back()->record.kind = kind;
        m_songs.back()->record.bitRate = 320;
        m_songs.back()->record.sampleRate = 44100;
        songs.append(&m_songs.back()->info);
    }
    m_panel->SetDuplicateMusicDetailedInfo(&songs);
    QCOMPARE(markedRows(), QList<int>({1}));
}

void TestDuplicateMusicDetailedWidget::copiesThatAreAlikeHaveNoMark()
{
    QList<QMusicInfo*> songs = group(3);
    m_panel->SetDuplicateMusicDetailedInfo(&songs);
    QCOMPARE(markedRows(), QList<int>());
}

void TestDuplicateMusicDetailedWidget::theMarkStandsBehindTheBitRate_data()
{
    QTest::addColumn<qint64>("bitRate");
    QTest::newRow("one digit") << qint64(8000);
    QTest::newRow("usual") << qint64(320000);
    QTest::newRow("lossless") << qint64(4608000);
    QTest::newRow("nonsense") << qint64(123456789012000);
}

void TestDuplicateMusicDetailedWidget::theMarkStandsBehindTheBitRate()
{
    QFETCH(qint64, bitRate);
    const auto song = Fixtures::makeSong(true);
    song->info.localInfo->bitrate = bitRate;
    DupMusicbarWidget row;
    row.SetDupMusicInfo(&song->info);
    row.setBest(true);
    const auto* rate = child<RetractLabel>(&row, "m_labelMusicKbps");
    const QRect mark = bestMark(&row)->geometry();
    const int textEnd = rate->x() + rate->fontMetrics().horizontalAdvance(rate->text());
    QCOMPARE(mark.size(), QSize(14, 14));
    QCOMPARE(mark.center().y(), rate->geometry().center().y());
    QVERIFY(mark.left() > textEnd || bitRate > 100000000);
    QVERIFY(mark.right() < child<QWidget>(&row, "m_labelMusicFormat")->x());
    row.resize(row.minimumSizeHint());
    const QColor middle = row.grab().toImage().pixelColor(mark.left() + 2, mark.center().y());
    QVERIFY2(middle.green() > middle.red() && middle.green() > middle.blue(), qPrintable(middle.name()));
}

void TestDuplicateMusicDetailedWidget::theTipTellsCopiesApart()
{
    QList<QMusicInfo*> songs = group(2);
    const QString path = m_folder.filePath("a <b>copy.mp3");
    songs.last()->localInfo->filePath = Fixtures::saveBytes("12345", path);
    m_panel->SetDuplicateMusicDetailedInfo(&songs);
    const QString last = tipOf(rows().last());
    QVERIFY2(last.startsWith(path), qPrintable(last));
    QVERIFY(last.contains("5.00B"));
    QVERIFY(last.contains("Title: Song 1"));
    QVERIFY(tipOf(rows().first()).contains("Title: Song 0"));
    // The same over its texts; its buttons and its mark have tips of their own.
    QCOMPARE(tipOf(child<QWidget>(rows().last(), "m_labelMusicArtist")), last);
    QCOMPARE(tipOf(child<QWidget>(rows().last(), "m_btnPlayMusic")), QString("Play"));
    rows().last()->setBest(true);
    QCOMPARE(tipOf(bestMark(rows().last())), QString("Best sound of this group"));
    QVERIFY(rows().last()->toolTip().isEmpty()); // made when it is asked for
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
    QVERIFY(!findWindow<ShowMusicInfoWidget>());
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
