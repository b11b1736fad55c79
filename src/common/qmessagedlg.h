#pragma once

#include "common/skinpicture.h"

#include <QDialog>

#include <memory>

class QImageButton;
class QTextEdit;

/// A frameless message box that paints its own border and title. exec() answers 1 when the first button was
/// chosen, 0 for everything else.
class QMessageDlg : public QDialog
{
    Q_OBJECT

public:
    /// What the two buttons say. Restart wins over yes and no; without a flag they say OK and Cancel.
    enum StyleFlag : unsigned int { StyleRestart = 0x200, StyleYesNo = 0x400 };

    explicit QMessageDlg(QWidget* parent = nullptr);
    ~QMessageDlg() override;

    void SetTitle(const QString& title);
    /// Plain text; line feeds end lines. A text too long for the screen is scrolled, a
    /// text of more than 32 Ki characters is cut off.
    void SetMessage(const QString& message);
    void SetMessageStyle(unsigned int flags);
    /// Hands back nothing: the pictures' paths stay as they are.
    static QString GetAppPath() { return QString(); }

public slots:
    void OnBtnOk();
    void OnBtnCancel();

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    void LoadBorderImg();
    void InitMessage();
    void InitButton();
    void InitConnects();
    bool loadAnswers(const char* first, const char* second);
    void placeParts();
    QSize messageSize() const;
    void paintTitle(QPainter& painter) const;
    QRect titleRect() const;

    std::unique_ptr<SkinPicture> m_pTop;
    std::unique_ptr<SkinPicture> m_pBottom;
    std::unique_ptr<SkinPicture> m_pLeft;
    std::unique_ptr<SkinPicture> m_pRight;
    std::unique_ptr<SkinPicture> m_pTitleIcon;
    QImageButton* m_btnOk;
    QImageButton* m_btnCancel;
    QImageButton* m_btnClose;
    QTextEdit* m_textMessage;
    QString m_strTitle;
    QString m_strMessage;
    QPoint m_ptPress; ///< from the dialog's top left corner
};

/// The platform's own information box with an OK button; returns once it is closed. Both texts are UTF-8, and
/// the last argument is not used.
void ShowMessage(const char* text, const char* title, unsigned int style);
