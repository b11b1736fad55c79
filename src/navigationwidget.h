#pragma once

#include "common/qimagewidget.h"

#include <memory>

namespace Ui {
class NavigationWidget;
}

/// The pane at the left: three stacked buttons that choose what the central view shows, each with its count.
/// The chosen button is the disabled one.
class NavigationWidget : public QImageWidget
{
    Q_OBJECT

public:
    explicit NavigationWidget(QWidget* parent = nullptr);
    ~NavigationWidget() override;

    void setAllSongsCount(int count);
    /// Hides or shows the undefined and the duplicate button.
    void setBtnHidden(bool hidden);
    /// Selects "All" without a signal.
    void OnLeftWidgetBtnState();

signals:
    void emitMusicAll();
    void emitMusicUndefined();
    void emitMusicDuplicate();
    void emitHiddenMusicDetailedWidget();

public slots:
    void OnBtnMusicAll();
    void OnBtnMusicUndefined();
    void OnBtnMusicDuplicate();
    void setUndefindSongsCount(int count);
    void setDuplicateSongsCount(int count);
    void setMusicCount(int all, int undefined, int duplicate);
    /// As a click on the row, counted from the top: nothing while it cannot be clicked.
    void choose(int row);
    /// Selects "All" without a signal.
    void SlotSetBtnState();
    void SlotForbidClickingBtn(bool forbid);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    void InitBtn();
    void InitConnect();
    void stackButtons();
    void select(QWidget* chosen);

    std::unique_ptr<Ui::NavigationWidget> ui;
};
