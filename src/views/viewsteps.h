#pragma once

#include <qnamespace.h>

/// Where keys take the mark of a view.
namespace ViewSteps {
struct Layout
{
    int rows;         ///< of the model
    int columns;      ///< how many of them stand side by side, at least one
    int linesOfAPage; ///< at least one
};

/// The row that the key leads to, an arrow, Page Up, Page Down, Home or End: one that there is, unless there
/// is none at all (-1). Without a mark (-1) every key goes to the first row, or End to the last.
int from(int row, int key, const Layout& layout);
} // namespace ViewSteps
