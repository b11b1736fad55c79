#pragma once

#include <QMenuBar>

class MainWindow;

/// The window's menus, in a flat bar that lies on the banner; on macOS it is the system's menu bar.
class MainMenu : public QMenuBar
{
    Q_OBJECT

public:
    explicit MainMenu(MainWindow* window);

private:
    QAction* add(const QString& text, const char* icon, MainWindow* window, const char* slot);
};
