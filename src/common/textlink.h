#pragma once

#include <QAbstractButton>

/// A caption that is clicked like a link: underlined under the mouse, and reached by Tab. Return and Space
/// click it, too. A press elsewhere takes the focus to no link. Where it does not fit in one line, its first
/// word stands above the others, and what is too long even so ends in "...".
class TextLink : public QAbstractButton
{
    Q_OBJECT

public:
    explicit TextLink(const QString& caption, QWidget* parent = nullptr);

    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void enterEvent(QEvent* event) override;
    void leaveEvent(QEvent* event) override;

private:
    QString shownText() const;
};
