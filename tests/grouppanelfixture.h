#pragma once

#include "common/qimagebutton.h"
#include "common/skinlabel.h"
#include "duplicatemusicdetailedwidget.h"
#include "dupmusicbarwidget.h"
#include "fixtures.h"
#include "guidriver.h"
#include "playsongwidget.h"
#include "songfixtures.h"
#include "startup.h"

#include <QApplication>
#include <QHelpEvent>
#include <QTemporaryDir>
#include <QTextDocumentFragment>
#include <QToolTip>
#include <QtTest>

/// The panel of one duplicate group, and songs for it.
class GroupPanelFixture : public QObject
{
public:
    static void initMain()
    {
        qputenv("MELODRIFT_AUDIO_OUTPUT", "null");
        Startup::beforeApplication();
    }

protected:
    void start();
    void prepare();
    void clear();

    QList<QMusicInfo*> group(int songs);
    QList<DupMusicbarWidget*> rows() const { return m_panel->findChildren<DupMusicbarWidget*>(); }
    template <typename T>
    static T* child(const QWidget* parent, const char* name)
    {
        return parent->findChild<T*>(name);
    }
    static void click(const QWidget* parent, const char* button)
    {
        QTest::mouseClick(child<QImageButton>(parent, button), Qt::LeftButton);
    }
    static bool stops(const DupMusicbarWidget* row)
    {
        const bool stop = !child<QImageButton>(row, "m_btnStopMusic")->isHidden();
        if (child<QImageButton>(row, "m_btnPlayMusic")->isHidden() != stop)
            qFatal("both buttons at once");
        return stop;
    }
    /// What a tip says when the pointer rests on the widget.
    static QString tipOf(const QWidget* widget);
    /// Null where the row has none.
    static SkinLabel* bestMark(const DupMusicbarWidget* row) { return child<SkinLabel>(row, "m_labelBest"); }
    /// The positions of the rows that show the mark of the best copy.
    QList<int> markedRows() const;
    PlaySongWidget* player() const { return findWindow<PlaySongWidget>(); }

    QTemporaryDir m_folder;
    std::vector<std::unique_ptr<Fixtures::Song>> m_songs;
    std::unique_ptr<Fixtures::ModeGuard> m_mode;
    std::unique_ptr<DuplicateMusicDetailedWidget> m_panel;
    std::unique_ptr<DialogDriver> m_dialogs;
};

inline void GroupPanelFixture::start()
{
    Startup::afterApplication();
    Fixtures::genericCover();
}

inline void GroupPanelFixture::prepare()
{
    m_mode = std::make_unique<Fixtures::ModeGuard>(true);
    m_panel = std::make_unique<DuplicateMusicDetailedWidget>();
    m_panel->resize(330, 572);
    m_dialogs = std::make_unique<DialogDriver>();
}

inline void GroupPanelFixture::clear()
{
    m_panel.reset();
    m_dialogs.reset();
    m_mode.reset();
    m_songs.clear();
}

inline QList<QMusicInfo*> GroupPanelFixture::group(int songs)
{
    QList<QMusicInfo*> list;
    for (int i = 0; i < songs; ++i) {
        m_songs.push_back(Fixtures::makeSong(true));
        LocalMusicInfo& local = *m_songs.back()->info.localInfo;
        local.title = QStringLiteral("Song %1").arg(i);
        local.filePath = Fixtures::tone("wav", 2000);
        local.duration = 2000;
        local.format = QStringLiteral("WAV");
        list.append(&m_songs.back()->info);
    }
    return list;
}

inline QList<int> GroupPanelFixture::markedRows() const
{
    QList<int> marked;
    for (int position = 0; position < rows().size(); ++position) {
        const SkinLabel* mark = bestMark(rows().at(position));
        if (mark && mark->isVisible())
            marked.append(position);
    }
    return marked;
}

inline QString GroupPanelFixture::tipOf(const QWidget* widget)
{
    QToolTip::hideText();
    const QPoint middle = widget->rect().center();
    QHelpEvent asked(QEvent::ToolTip, middle, widget->mapToGlobal(middle));
    QApplication::sendEvent(const_cast<QWidget*>(widget), &asked);
    return QTextDocumentFragment::fromHtml(QToolTip::text()).toPlainText();
}
