#pragma once

#include "guidriver.h"
#include "mainwindow.h"

#include <QApplication>
#include <QTimer>

#include <cstdio>

/// What a test's program plays in the program's windows: started with the name of a slot of its scene in its
/// environment it runs the program itself, and the slot is its user.
class ProgramScene : public QObject
{
public:
    static constexpr char variable[] = "MELODRIFT_PLAYS";

    /// For qAddPreRoutine(): plays as soon as the program's windows run.
    template <class Scene>
    static void begin()
    {
        // The application object that only reads the command line has no windows.
        if (!qobject_cast<QApplication*>(QCoreApplication::instance()))
            return;
        QTimer::singleShot(0, QCoreApplication::instance(), [] {
            auto* scene = new Scene;
            scene->setParent(QCoreApplication::instance());
            QMetaObject::invokeMethod(scene, qgetenv(variable).constData());
        });
    }

protected:
    static void tell(const QByteArray& line)
    {
        std::puts(line.constData());
        std::fflush(stdout);
    }
    static MainWindow& window()
    {
        auto* const window = findWindow<MainWindow>();
        if (!window)
            qFatal("there is no window");
        return *window;
    }

    DialogDriver m_dialogs;
};
