#pragma once

#include <QElapsedTimer>
#include <QString>

class QAbstractItemModel;

/// Letters typed one after another, and the titles that they lead to: without regard to case and accents, as
/// songs are found.
class TitleJump
{
public:
    /// The next row behind the marked one (-1 for none) whose first column begins with what was typed, these
    /// letters at last, and round again from the top; -1 for none. The same letter again goes on to the next
    /// row; with other letters the marked row may be it.
    int rowFor(const QString& letters, const QAbstractItemModel& model, int marked);
    /// Whether a letter was typed a moment ago: another one, or a blank, goes on with it.
    bool isGoingOn() const;

private:
    QString m_typed;
    QElapsedTimer m_sinceLetter; ///< not valid before the first
};
