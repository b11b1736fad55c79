#include "views/viewsteps.h"

#include <algorithm>

namespace {
/// Past the end of the last line, which may be short, lies the last row.
int linesOn(int row, int lines, const ViewSteps::Layout& layout)
{
    const int line = row / layout.columns;
    const int lastLine = (layout.rows - 1) / layout.columns;
    const int reached = std::clamp(line + lines, 0, lastLine);
    return std::min(row + (reached - line) * layout.columns, layout.rows - 1);
}
} // namespace

int ViewSteps::from(int row, int key, const Layout& layout)
{
    const int last = layout.rows - 1;
    if (key == Qt::Key_End)
        return last;
    if (key == Qt::Key_Home || row < 0)
        return std::min(0, last);
    const int sideways = layout.columns > 1 ? 1 : 0;
    switch (key) {
    case Qt::Key_Left:
        return std::max(row - sideways, 0);
    case Qt::Key_Right:
        return std::min(row + sideways, last);
    case Qt::Key_Up:
        return linesOn(row, -1, layout);
    case Qt::Key_Down:
        return linesOn(row, 1, layout);
    case Qt::Key_PageUp:
        return linesOn(row, -layout.linesOfAPage, layout);
    case Qt::Key_PageDown:
        return linesOn(row, layout.linesOfAPage, layout);
    default:
        return row;
    }
}
