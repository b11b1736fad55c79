#pragma once

#include "common/footline.h"
#include "common/qimagewidget.h"

#include <memory>

class IAudioPlayer;
struct QMusicInfo;

namespace Ui {
class PlaySongWidget;
}

/// A small window that plays one song at a time. Space plays and pauses, Escape closes it. Closing it pauses;
/// the song stays loaded.
class PlaySongWidget : public QImageWidget
{
    Q_OBJECT

public:
    explicit PlaySongWidget(QWidget* parent = nullptr);
    ~PlaySongWidget() override;

    /// Shows the song and plays it from its start. Only songs from a duplicate row make the row-button
    /// signals be emitted, and none is emitted here. The song is not needed after the call.
    void SetMusicPlayInfo(QMusicInfo* song, bool fromDupBar);
    void PlayMusic();
    void PauseMusic();
    /// "mm::ss", empty from 60 minutes on.
    QString ConvertTime(long long milliseconds) const;
    void MusicDidfinish();

    /// Shows the window in front. It lies beside the other one, and clear of what is to be seen there, what
    /// matters most first; but where the user moved it, unless that screen is gone.
    void ShowBeside(const QRect& other, const QVector<QRect>& seen = {});

public slots:
    void UpdatePlayTime();
    void SlotOnBtnPlay();
    void SlotOnBtnPause();
    /// Goes to this fraction, 0 to 1, of the song.
    void SlotSetMusicPlayProgressValue(double fraction);

signals:
    /// For the foot of the window.
    void emitTold(const FootText& told);
    /// The row's stop button goes, its play button comes.
    void emitSongStopBtnHidden();
    /// The row's play button goes, its stop button comes.
    void emitSongPlayBtnHidden();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void closeEvent(QCloseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    struct DestroyPlayerLater
    {
        void operator()(IAudioPlayer* player) const;
    };

    void showSong(const QMusicInfo* song);
    void load(const QString& path);
    void startTimer();
    void showPauseButton(bool pause);
    void tellTime(int position, int duration);
    bool isWhereItWasPut() const;
    void placeBeside(const QRect& other, const QVector<QRect>& seen);
    /// Whatever frame had been guessed.
    void keepFrameInside();

    std::unique_ptr<Ui::PlaySongWidget> ui;
    bool m_bFromDupBar = true;
    quint64 m_nTotalTime = 0; ///< milliseconds
    std::unique_ptr<IAudioPlayer, DestroyPlayerLater> m_pPlayer;
    bool m_bToldSilent = false; ///< of the song that is loaded
    int m_nToldSecond = -1;     ///< of the same
    bool m_bPlaced = false;
    QPoint m_ptPlace;             ///< then
    bool m_bFrameGuessed = false; ///< the window was placed before its frame was known
};
