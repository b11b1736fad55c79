#include "programwindow.h"

#include "common/skinpicture.h"
#include "mainwindow.h"

#include <QApplication>
#include <QDesktopWidget>
#include <QIcon>

std::unique_ptr<MainWindow> makeProgramWindow()
{
    auto window = std::make_unique<MainWindow>();
    QApplication::setWindowIcon(SkinPicture::icon("logo.png"));
    window->setTopImage(SkinPicture::path("bg_banner.png"));
    window->setFootImage(SkinPicture::path("bg_foot.png"));
    window->setBackgroundImage(SkinPicture::path("bg_right_nofile.png"));
    const QRect desktop = QApplication::desktop()->geometry();
    window->move((desktop.width() - window->width()) / 2, (desktop.height() - window->height()) / 2);
    window->setMinimumHeight(700);
    window->setMinimumWidth(1000);
    return window;
}
