#pragma once

#include "common/paintedbutton.h"

/// A caption that is clicked like a link, underlined under the mouse. A series of quick presses is one click.
/// Where it does not fit in one line, its first word stands above the others, and what is too long even so
/// ends in
/// "...".
class TextLink : public PaintedButton
{
    Q_OBJECT

public:
    explicit TextLink(const QString& caption, QWidget* parent = nullptr);

    QSize sizeHint() const override;

protected:
    void mousePressEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    QString shownText() const;

    bool m_bClickedTwice = false;
    unsigned long m_lastOfSeries = 0; ///< when; milliseconds of the window system
};
