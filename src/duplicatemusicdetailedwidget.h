#pragma once

#include <QList>
#include <QWidget>

#include <memory>

class DupMusicbarWidget;
struct QMusicInfo;

namespace Ui {
class DuplicateMusicDetailedWidget;
}

/// The panel at the right that lists one duplicate group row by row.
class DuplicateMusicDetailedWidget : public QWidget
{
    Q_OBJECT

public:
    explicit DuplicateMusicDetailedWidget(QWidget* parent = nullptr);
    ~DuplicateMusicDetailedWidget() override;

    /// Shows a row for each song and the panel; no list: forgets the group shown. The songs must outlive
    /// their rows.
    void SetDuplicateMusicDetailedInfo(QList<QMusicInfo*>* list);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    std::unique_ptr<Ui::DuplicateMusicDetailedWidget> ui;
    QList<QMusicInfo*>* m_pMusicList = nullptr;
    QList<DupMusicbarWidget*> m_listBarWidget;
};
