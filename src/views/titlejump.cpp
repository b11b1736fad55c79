#include "views/titlejump.h"

#include "collection/textfolding.h"

#include <QAbstractItemModel>
#include <QGuiApplication>
#include <QStyleHints>

#include <string>

bool TitleJump::isGoingOn() const
{
    return m_sinceLetter.isValid() &&
           m_sinceLetter.elapsed() <= QGuiApplication::styleHints()->keyboardInputInterval();
}

int TitleJump::rowFor(const QString& letters, const QAbstractItemModel& model, int marked)
{
    m_typed = isGoingOn() ? m_typed + letters : letters;
    m_sinceLetter.start();
    const bool isOneLetter = m_typed.count(m_typed.at(0)) == m_typed.size();
    const std::string beginning = TextFolding::folded(isOneLetter ? m_typed.left(1) : m_typed);
    const int first = isOneLetter ? marked + 1 : qMax(marked, 0);
    const int rows = beginning.empty() ? 0 : model.rowCount();
    for (int step = 0; step < rows; ++step) {
        const int row = (first + step) % rows;
        const std::string title = TextFolding::folded(model.index(row, 0).data().toString());
        if (title.compare(0, beginning.size(), beginning) == 0)
            return row;
    }
    return -1;
}
