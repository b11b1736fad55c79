#pragma once

#include "audiocore/tagitem.h"
#include "audiofile.h"
#include "centerwidget.h"
#include "fixtures.h"
#include "guidriver.h"
#include "startup.h"
#include "windowfixture.h"

#include <QDragEnterEvent>
#include <QMimeData>
#include <QTemporaryDir>
#include <QtTest>

/// A content area in the local mode, and files for it.
class CenterFixture : public ScreenFixture
{
protected:
    void start();
    void prepare();
    void clear();

    template <typename View>
    View* view(const char* name) const
    {
        return m_center->findChild<View*>(name);
    }
    static void bothDisplays();
    void display(bool table) const;
    QString tone(const QString& name, const QString& title, const char* kind = "mp3") const;
    void drop(const QStringList& paths, QWidget* target = nullptr);
    void add(const QStringList& paths);

    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<CenterWidget> m_center;
    std::unique_ptr<DialogDriver> m_dialogs;
};

inline void CenterFixture::start()
{
    Startup::afterApplication();
}

inline void CenterFixture::prepare()
{
    m_folder = std::make_unique<QTemporaryDir>();
    m_center = std::make_unique<CenterWidget>();
    m_dialogs = std::make_unique<DialogDriver>();
    m_center->resize(920, 585);
    m_center->show();
    m_center->SwitchToLocalCleanModel();
}

inline void CenterFixture::clear()
{
    m_center.reset();
    m_dialogs.reset();
    forgetModes();
}

/// Rows for tests of what grid and table have in common.
inline void CenterFixture::bothDisplays()
{
    QTest::addColumn<bool>("table");
    QTest::newRow("grid") << false;
    QTest::newRow("table") << true;
}

inline void CenterFixture::display(bool table) const
{
    if (table)
        m_center->OnBtnTableView();
    else
        m_center->OnBtnGridView();
}

inline QString CenterFixture::tone(const QString& name, const QString& title, const char* kind) const
{
    const QString path = Fixtures::copyTone(kind, m_folder->path(), name);
    AudioFile::write(path, {{TAG_TITLE, title}, {TAG_ARTIST, "A"}, {TAG_ALBUM, "B"}, {TAG_GENRE, "Pop"}});
    return path;
}

inline void CenterFixture::drop(const QStringList& paths, QWidget* target)
{
    QWidget* receiver = target ? target : m_center.get();
    QMimeData data;
    QList<QUrl> urls;
    for (const QString& path : paths)
        urls.append(QUrl::fromLocalFile(path));
    data.setUrls(urls);
    const QPoint middle = receiver->rect().center();
    QDragEnterEvent enter(middle, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(receiver, &enter);
    QDropEvent event(middle, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(receiver, &event);
    QTest::qWait(0);
    QTRY_VERIFY(!QApplication::activeModalWidget());
}

inline void CenterFixture::add(const QStringList& paths)
{
    m_dialogs->expectButton("m_btnType");
    drop(paths);
}
