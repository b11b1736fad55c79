#pragma once

#include "common/footline.h"

#include <QWidget>

#include <memory>

class ShowMusicInfoWidget;
class SkinLabel;
struct QMusicInfo;

namespace Ui {
class DupMusicbarWidget;
}

/// One row of the duplicate group panel: what tells the songs of a group apart, whether this one is kept, and
/// buttons to hear it, to see its tags and to find its file.
class DupMusicbarWidget : public QWidget
{
    Q_OBJECT

public:
    explicit DupMusicbarWidget(QWidget* parent = nullptr);
    ~DupMusicbarWidget() override;

    /// Shows the song, which must outlive the row; null: the one shown before, anew.
    void SetDupMusicInfo(QMusicInfo* song);
    QMusicInfo* song() const { return m_pMusicInfo; }
    /// "mm::ss", empty from 60 minutes on.
    QString ConvertTime(long long milliseconds) const;
    /// Whether deletions leave this song alone.
    bool isKept() const { return m_bChecked; }
    /// Whether keys act on this row; it is marked while the user works by keys.
    void setAtHand(bool atHand);
    /// Has Tab go on to its buttons from this widget.
    void putInTabOrder(QWidget* former);
    /// Whether the mark of the copy that sounds best stands behind the bit rate.
    void setBest(bool best);

    /// As the button that shows information, with this point of the screen in place of the pointer's.
    void showCard(const QPoint& pointer);
    /// Where keys have the card shown.
    QPoint cardPlace() const;
    /// Shows the play button in place of the stop button.
    void SetBtnPauseHidden();
    /// Shows the stop button in place of the play button.
    void SetBtnPlayHidden();

public slots:
    void SlotOnBtnCheckBox();
    void SlotOnBtnPlay();
    void SlotOnBtnPause();
    void SlotOnBtnOpenPath();
    void SlotOnBtnShowInfo();

signals:
    void emitStartPlaySong(QMusicInfo* song);
    void emitStopSong();
    /// For the foot of the window.
    void emitTold(const FootText& told);

protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    struct Position
    {
        qint64 x = 0;
        qint64 y = 0;
    };

    void InitButtons();
    void makeBestMark();
    void tellState();

    std::unique_ptr<Ui::DupMusicbarWidget> ui;
    bool m_bChecked = false;
    bool m_bAtHand = false;
    QMusicInfo* m_pMusicInfo = nullptr;
    SkinLabel* m_pBestMark = nullptr;                       ///< made where it is needed first
    std::unique_ptr<ShowMusicInfoWidget> m_pShowInfoWidget; ///< the card last opened from here
    Position m_ptCursor;                                    ///< where the pointer was then
};
