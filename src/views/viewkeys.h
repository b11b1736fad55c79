#pragma once

#include <QString>
#include <QVector>

class QKeyEvent;

/// The keys of the content area: the one table of what they are and what they are for.
namespace ViewKeys {
enum class Command {
    None,
    Move, ///< the mark, by the key itself
    Play,
    ToggleKept,
    FormerRow,
    NextRow,
    FormerGroup,
    NextGroup,
    Edit,
    Apply,
    Cancel,
    ShowAll,
    ShowUndefined,
    ShowDuplicates,
    SwitchDisplay,
    ShowCard,
    Clear,
    OpenMenu
};

struct Key
{
    int key;         ///< with its modifiers
    QString caption; ///< as menus and the help page have it, such as "Ctrl+E"
    Command command;
};

const QVector<Key>& all();
Command commandOf(const QKeyEvent& event);
/// Whether a key that is held does this again and again.
bool repeats(Command command);
/// How menus name the key; of several the first.
QString captionOf(Command command);
} // namespace ViewKeys
