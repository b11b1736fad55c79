#include "mainmenu.h"

#include "common/skinpicture.h"
#include "common/style.h"
#include "mainwindow.h"

namespace {
constexpr int menuHeight = 20;
constexpr int menuWidth = 320;
} // namespace

/// A bar of the window's own would push the header down.
MainMenu::MainMenu(MainWindow* window) : QMenuBar(window)
{
    setObjectName(QStringLiteral("m_menuBar"));
    setStyleSheet(
        QStringLiteral(
            "QMenuBar{background:transparent;border:0}"
            "QMenuBar::item{background:transparent;padding:1px 8px;margin:0;color:%1;border-radius:4px}"
            "QMenuBar::item:disabled{color:%4}"
            "QMenuBar::item:selected{background:%2}"
            "QMenuBar::item:pressed{background:%3}")
            .arg(Style::menuText.name(), Style::menuHovered.name(), Style::menuPressed.name(),
                 Style::locked.name()));
    add(QStringLiteral("Home"), "menu_home.png", window, SLOT(SlotHomeMenu()));
    add(QStringLiteral("About"), "menu_about.png", window, SLOT(SlotAboutMenu()));
    add(QStringLiteral("Help"), "menu_help.png", window, SLOT(SlotHelpMenu()))
        ->setShortcut(QKeySequence::HelpContents);
    QAction* exit = add(QStringLiteral("Exit"), "menu_exit.png", window, SLOT(SlotExitMenu()));
    // Not every desktop has a key of its own for this. The playback window takes it, too.
    exit->setShortcut(QStringLiteral("Ctrl+Q"));
    exit->setShortcutContext(Qt::ApplicationShortcut);
    setGeometry(4, 0, menuWidth, menuHeight);
}

QAction* MainMenu::add(const QString& text, const char* icon, MainWindow* window, const char* slot)
{
    QAction* action = addMenu(text)->addAction(SkinPicture::icon(icon), text);
    connect(action, SIGNAL(triggered()), window, slot);
    return action;
}
