#pragma once

#include <QWidget>

class QAbstractScrollArea;

/// Says something in the middle of a view that has nothing to show: a heading, and a line below it. Lets the
/// mouse through.
class ViewNotice : public QWidget
{
    Q_OBJECT

public:
    /// Hidden, and the view's.
    explicit ViewNotice(QAbstractScrollArea* view);

    /// Without a heading nothing is said.
    void say(const QString& heading, const QString& line);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    QAbstractScrollArea* m_view;
    QString m_heading;
    QString m_line;
};
