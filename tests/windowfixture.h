#pragma once

#include "centerwidget.h"
#include "common/qimagebutton.h"
#include "itunes/itunesmusiclibrary.h"
#include "mainwindow.h"
#include "owntrash.h"
#include "patience.h"
#include "qiorvoutil.h"
#include "startup.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QtTest>

#include <memory>

/// What tests of the program's screens begin and end with, and the clicks that a user makes there.
class ScreenFixture : public QObject
{
public:
    static void initMain()
    {
        qputenv("MELODRIFT_AUDIO_OUTPUT", "null");
        Startup::beforeApplication();
        QApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
    }

protected:
    /// The next test finds the modes as the program's start does.
    static void forgetModes()
    {
        QIOrvoUtil::m_cleanMode = false;
        m_local_add_or_ScanAgain = 0;
    }
    static void clickRow(QAbstractItemView* view, int row = 0, bool twice = false)
    {
        const QPoint place = view->visualRect(view->model()->index(row, 0)).center();
        QTest::mouseClick(view->viewport(), Qt::LeftButton, Qt::NoModifier, place);
        if (twice)
            QTest::mouseDClick(view->viewport(), Qt::LeftButton, Qt::NoModifier, place);
    }

    const OwnTrash m_bin;
};

/// The same with a window.
class WindowFixture : public ScreenFixture
{
protected:
    template <typename T>
    T* part(const char* name) const
    {
        return m_window->findChild<T*>(name);
    }
    void click(const char* button) const { QTest::mouseClick(part<QImageButton>(button), Qt::LeftButton); }
    /// Clicks Start Scan and waits for the end of the scan.
    bool scan() const
    {
        click("m_btnStarScan");
        return QTest::qWaitFor([this] { return part<QImageButton>("m_btnStarScan")->isEnabled(); }, patience);
    }
    void closeWindow()
    {
        m_window.reset();
        closeITunesLibrary();
        forgetModes();
    }

    std::unique_ptr<MainWindow> m_window;
};
