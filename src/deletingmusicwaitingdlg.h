#pragma once

#include "common/qimagedialog.h"

#include <memory>

class SkinMovie;

namespace Ui {
class DeletingMusicWaitingDlg;
}

/// Keeps the user waiting while duplicates are deleted, or other long work is done. Neither keys nor the
/// window system close it: only finish() does.
class DeletingMusicWaitingDlg : public QImageDialog
{
    Q_OBJECT

public:
    explicit DeletingMusicWaitingDlg(QWidget* parent = nullptr);
    ~DeletingMusicWaitingDlg() override;

    /// The part of the window that can be seen, in its coordinates.
    QRect card() const;
    void finish();
    /// What is done, with three dots, in place of the deletion.
    void setWork(const QString& doing);
    /// What it says.
    const QString& text() const { return m_strProgress; }

public slots:
    void showProgress(int done, int total);
    void reject() override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    std::unique_ptr<Ui::DeletingMusicWaitingDlg> ui;
    std::unique_ptr<SkinMovie> m_pMovie;
    QString m_strWork;
    QString m_strProgress;
    bool m_bFinished = false;
};
