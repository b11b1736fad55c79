#include "views/viewkeys.h"

#include <QKeyEvent>

#include <algorithm>

namespace {
constexpr int shift = Qt::SHIFT;
constexpr int ctrl = Qt::CTRL;
constexpr int alt = Qt::ALT;

/// The two Enter keys are one; digits may need Shift, and those of the number pad are digits.
int keyOf(const QKeyEvent& event)
{
    const int key = event.key() == Qt::Key_Enter ? int(Qt::Key_Return) : event.key();
    const bool digit = key >= Qt::Key_0 && key <= Qt::Key_9;
    Qt::KeyboardModifiers modifiers = event.modifiers() & ~Qt::KeypadModifier;
    if (digit)
        modifiers &= ~Qt::ShiftModifier;
    return key | int(modifiers);
}
} // namespace

const QVector<ViewKeys::Key>& ViewKeys::all()
{
    static const QVector<Key> keys = {
        {Qt::Key_Left, QStringLiteral("Left"), Command::Move},
        {Qt::Key_Right, QStringLiteral("Right"), Command::Move},
        {Qt::Key_Up, QStringLiteral("Up"), Command::Move},
        {Qt::Key_Down, QStringLiteral("Down"), Command::Move},
        {Qt::Key_PageUp, QStringLiteral("Page Up"), Command::Move},
        {Qt::Key_PageDown, QStringLiteral("Page Down"), Command::Move},
        {Qt::Key_Home, QStringLiteral("Home"), Command::Move},
        {Qt::Key_End, QStringLiteral("End"), Command::Move},
        {Qt::Key_Return, QStringLiteral("Enter"), Command::Play},
        {Qt::Key_Space, QStringLiteral("Space"), Command::ToggleKept},
        {alt | Qt::Key_Up, QStringLiteral("Alt+Up"), Command::FormerRow},
        {alt | Qt::Key_Down, QStringLiteral("Alt+Down"), Command::NextRow},
        {ctrl | Qt::Key_Up, QStringLiteral("Ctrl+Up"), Command::FormerGroup},
        {ctrl | Qt::Key_Down, QStringLiteral("Ctrl+Down"), Command::NextGroup},
        {Qt::Key_F2, QStringLiteral("F2"), Command::Edit},
        {ctrl | Qt::Key_E, QStringLiteral("Ctrl+E"), Command::Edit},
        {ctrl | Qt::Key_Return, QStringLiteral("Ctrl+Enter"), Command::Apply},
        {Qt::Key_Escape, QStringLiteral("Esc"), Command::Cancel},
        {ctrl | Qt::Key_1, QStringLiteral("Ctrl+1"), Command::ShowAll},
        {ctrl | Qt::Key_2, QStringLiteral("Ctrl+2"), Command::ShowUndefined},
        {ctrl | Qt::Key_3, QStringLiteral("Ctrl+3"), Command::ShowDuplicates},
        {ctrl | Qt::Key_G, QStringLiteral("Ctrl+G"), Command::SwitchDisplay},
        {ctrl | Qt::Key_I, QStringLiteral("Ctrl+I"), Command::ShowCard},
        {Qt::Key_Delete, QStringLiteral("Delete"), Command::Clear},
        {Qt::Key_Menu, QStringLiteral("Menu"), Command::OpenMenu},
        {shift | Qt::Key_F10, QStringLiteral("Shift+F10"), Command::OpenMenu},
    };
    return keys;
}

ViewKeys::Command ViewKeys::commandOf(const QKeyEvent& event)
{
    const int pressed = keyOf(event);
    const auto found =
        std::find_if(all().begin(), all().end(), [pressed](const Key& each) { return each.key == pressed; });
    return found == all().end() ? Command::None : found->command;
}

QString ViewKeys::captionOf(Command command)
{
    const auto found = std::find_if(all().begin(), all().end(),
                                    [command](const Key& each) { return each.command == command; });
    return found == all().end() ? QString() : found->caption;
}

bool ViewKeys::repeats(Command command)
{
    switch (command) {
    case Command::Move:
    case Command::FormerRow:
    case Command::NextRow:
    case Command::FormerGroup:
    case Command::NextGroup:
        return true;
    default:
        return false;
    }
}
