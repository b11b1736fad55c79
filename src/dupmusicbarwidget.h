#pragma once

#include <QWidget>

#include <memory>

struct QMusicInfo;

namespace Ui {
class DupMusicbarWidget;
}

/// One row of the duplicate group panel: what tells the songs of a group apart.
class DupMusicbarWidget : public QWidget
{
    Q_OBJECT

public:
    explicit DupMusicbarWidget(QWidget* parent = nullptr);
    ~DupMusicbarWidget() override;

    /// The song must outlive the row.
    void SetDupMusicInfo(QMusicInfo* song);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    std::unique_ptr<Ui::DupMusicbarWidget> ui;
    QMusicInfo* m_pMusicInfo = nullptr;
};
