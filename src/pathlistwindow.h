#pragma once

#include <QStringList>
#include <QWidget>

/// A window with lines of text that can be selected and copied; it goes when it is closed.
class PathListWindow : public QWidget
{
    Q_OBJECT

public:
    /// Opens one over the window of the widget, which it does not outlive.
    static void open(QWidget& over, const QStringList& lines);

protected:
    void keyPressEvent(QKeyEvent* event) override;

private:
    PathListWindow(const QStringList& lines, QWidget* parent);
};
