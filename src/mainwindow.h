#pragma once

#include "common/lockedwidgets.h"

#include <QList>
#include <QMainWindow>

#include <memory>

class HeaderStatus;
class QTimer;
class SkinMovie;
class SkinPicture;

class PaintCoverImageThread;
struct QMusicInfo;
struct iTunesTrackRecord;

namespace Ui {
class MainWindow;
}

/// The application's frame: header, mode switch, menus, and the wiring between navigation pane and central
/// view.
class MainWindow : public QMainWindow
{
    Q_OBJECT

public:
    explicit MainWindow(QWidget* parent = nullptr);
    ~MainWindow() override;

    void setTopImage(const QString& path);
    void setFootImage(const QString& path);
    void setBackgroundImage(const QString& path);

    /// Switches to the local mode as the switch button does and then takes the files and folders, if any, in
    /// as a drop does.
    void OpenInLocalMode(const QStringList& paths);

public slots:
    void OnBtnStartScan();
    void SlotOnBtniTunesClean();
    void SlotOnBtnLocalClean();
    void SlotScanFinish();
    void SlotiTunesBtnMovieStop();
    void SlotLocalBtnMovieStop();
    void SlotHomeMenu();
    void SlotAboutMenu();
    void SlotHelpMenu();
    void SlotExitMenu();
    /// Oddity 18: declared, does nothing.
    void OnBtniTunesClean() {}

private slots:
    void SlotIntakeProgress(int done, int total);
    void SlotIntakeEnded();
    void SlotIntakeFinished();

protected:
    /// True while an iTunes scan runs; the switch to the local mode waits for its end.
    bool m_bScanning = false;

    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void closeEvent(QCloseEvent* event) override;
    bool focusNextPrevChild(bool next) override;

private:
    void Init();
    void InitMainMenu();
    void InitConnect();
    void scanITunesLibrary();
    void tellOfReading();
    void takeTracks(int count);
    void loadCovers();
    void placeHeader();
    bool postponedByWork(QTimer* timer) const;

    std::unique_ptr<Ui::MainWindow> ui;
    std::unique_ptr<HeaderStatus> m_status;
    std::unique_ptr<SkinMovie> m_pLocalSwitchMovie;
    std::unique_ptr<SkinMovie> m_piTunesSwitchMovie;
    QTimer* m_piTunesSwitchTimer = nullptr; ///< ends the switch to the local mode
    QTimer* m_pLocalSwitchTimer = nullptr;  ///< ends the switch to the iTunes mode
    std::unique_ptr<SkinPicture> m_pTopImage;
    std::unique_ptr<SkinPicture> m_pFootImage;
    std::unique_ptr<SkinPicture> m_pBackgroundImage;

    iTunesTrackRecord* m_pTrackRecords = nullptr; ///< the library's, of the last scan
    QList<QMusicInfo*> m_musicList;               ///< owned: the songs of the last scan
    PaintCoverImageThread* m_pCoverThread = nullptr;

    LockedWidgets m_lockedByIntake;
    QStringList m_pathsToOpen; ///< taken in once the local mode is in force
};
