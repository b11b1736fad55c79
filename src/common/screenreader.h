#pragma once

#include <QAccessible>

class QWidget;

/// What those hear who have the screen read out. Without this module they would hear of everything that a
/// window has, hidden or not, and of what is only painted nothing. GUI thread only.
namespace ScreenReader {
/// From now on windows, panels, pictures, texts and sliders of the kit are told as they show. Once or more
/// often.
void install();
/// What a panel or line is, where its class does not tell: a list, an item of one, a status.
void setRole(QWidget& widget, QAccessible::Role role);
/// The widget, which has not the focus itself, is what keys are at now; it is read out. Nothing while nobody
/// listens.
void announce(QWidget& widget);
} // namespace ScreenReader
