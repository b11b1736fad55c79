#pragma once

#include <QLabel>

/// A label that shortens a text that does not fit with "..." and shows the whole text as its tool tip.
class RetractLabel : public QLabel
{
    Q_OBJECT

public:
    explicit RetractLabel(QWidget* parent = nullptr);

    /// Hides QLabel::setText; the text is laid out again when the label's size changes.
    void setText(const QString& text);
    /// The full text last set.
    QString getName() const { return m_strName; }
    int getTextWidth() const { return m_nTextWidth; }

protected:
    void resizeEvent(QResizeEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    void showFitting();

    QString m_strName;
    int m_nTextWidth = -1;
};
