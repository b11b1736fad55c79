#pragma once

#include <memory>

class MainWindow;

/// The program's one window, in the middle of the desktop, with its pictures and icon, not yet shown. Needs
/// the application object, which outlives it.
std::unique_ptr<MainWindow> makeProgramWindow();
