#pragma once

#include "common/qimagedialog.h"

#include <QList>

#include <memory>

struct QMusicInfo;

namespace Ui {
class DeleteDupMusicInfoDlg;
}

/// Asks whether the unchecked songs of a group are to be deleted. Accepted by its OK button only.
class DeleteDupMusicInfoDlg : public QImageDialog
{
    Q_OBJECT

public:
    explicit DeleteDupMusicInfoDlg(QWidget* parent = nullptr);
    ~DeleteDupMusicInfoDlg() override;

    /// Says which songs of the group go, and which stay.
    void setSongs(const QList<QMusicInfo*>& going, const QList<QMusicInfo*>& kept);
    /// Whether the user accepted and wishes not to be asked again.
    bool isNotToAskAgain() const;

signals:
    /// Oddity 18: declared, never emitted.
    void emitAgreeToDeleteDupMusic();

public slots:
    void slotOnBtnOK();
    void slotOnBtnCancel();
    void reject() override;

private:
    std::unique_ptr<Ui::DeleteDupMusicInfoDlg> ui;
};
