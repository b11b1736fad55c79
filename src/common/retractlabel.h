#pragma once

#include <QLabel>

class QLineEdit;

/// A label that shortens a text that does not fit with "..." and shows the whole text as its tool tip. It can
/// turn into an editor that renames a file: the extension stays, and characters that file names may not
/// contain are refused.
class RetractLabel : public QLabel
{
    Q_OBJECT

public:
    explicit RetractLabel(QWidget* parent = nullptr);

    /// Hides QLabel::setText; the text is laid out again when the label's size changes.
    void setText(const QString& text);
    /// The full text last set, or the new name after a rename.
    QString getName() const { return m_strName; }
    /// Oddity 43: always -1.
    int getTextWidth() const { return m_nTextWidth; }
    /// Opens the editor over the label, or closes it unheard.
    void setCanEditText(bool edit);

signals:
    /// After a rename was accepted.
    void emitChangeName();

public slots:
    void RenameOK();
    void NameChange(const QString& text);

protected:
    bool event(QEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    void showFitting();
    void makeEditor();
    int extensionStart() const;

    QString m_strName;
    QLineEdit* m_pLineEdit = nullptr; ///< made by the first edit
    QString m_strLastValid;           ///< what the editor last held without a forbidden character
    int m_nTextWidth = -1;
    QString m_strOpened; ///< what the editor was opened with
};
