#pragma once

#include "common/qimagedialog.h"

#include <memory>

namespace Ui {
class MessageDialog;
}

/// The one message box for notices to the user: a text and up to two buttons. exec() answers 1 when the
/// action button was chosen, 0 for everything else.
class MessageDialog : public QImageDialog
{
    Q_OBJECT

public:
    explicit MessageDialog(QWidget* parent = nullptr);
    ~MessageDialog() override;

    void setMessageContect(const QString& text);
    /// Pictures of the action button and of the second button; an empty path leaves that button as it was.
    void SetButtonTypeImage(const QString& actionImage, const QString& cancelImage);
    void SetCancelButtonHidden(bool hidden);

    /// Shows a notice with the picture `actionImage`, by its name, on the action button, and waits for the
    /// user; whether the action button was chosen.
    static bool notify(const QString& text, const char* actionImage, bool cancelHidden = true);

private slots:
    void SlotOnBtnCancel();
    void SlotOnBtnType();

private:
    void InitButton();
    void InitConnect();

    std::unique_ptr<Ui::MessageDialog> ui;
};
