#pragma once

#include "common/retractlabel.h"
#include "duplicatemusicdetailedwidget.h"
#include "dupmusicbarwidget.h"
#include "footfixture.h"
#include "showmusicinfowidget.h"
#include "songs/songfields.h"

#include <QWindow>

/// The window with songs of either mode in one of the four views, and keys as the window system sends them.
class KeysFixture : public FootFixture
{
protected:
    /// Rows for tests of what both modes and both displays have in common.
    static void bothModesAndDisplays()
    {
        QTest::addColumn<bool>("local");
        QTest::addColumn<bool>("table");
        QTest::newRow("local, grid") << true << false;
        QTest::newRow("local, table") << true << true;
        QTest::newRow("iTunes, grid") << false << false;
        QTest::newRow("iTunes, table") << false << true;
    }
    /// Songs of these titles, in this order.
    void fill(bool local, const QStringList& titles)
    {
        QApplication::setActiveWindow(m_window.get());
        if (local) {
            fillLocal(titles);
        } else {
            const QString file = media("song", "Title");
            for (const QString& title : titles)
                addTrack(file, title.toUtf8());
            writeLibrary();
            QVERIFY(scan());
        }
        m_played.clear();
        connect(part<CenterWidget>("m_middleMusicWidget"), &CenterWidget::emitStartToPlayMusic, this,
                [this](QMusicInfo* song) { m_played.append(SongFields::title(song)); });
        QApplication::setActiveWindow(m_window.get());
    }
    void key(int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) const
    {
        QTest::keyClick(m_window->windowHandle(), Qt::Key(key), modifiers);
    }
    void showTable(bool table) const
    {
        if (table)
            click("m_btnTableDisplay");
    }
    QAbstractItemView* view() const
    {
        for (const char* name :
             {"m_allMusicListView", "m_allMusicTableView", "m_dupMusicListView", "m_dupMusicTableView"})
            if (part<QAbstractItemView>(name)->isVisible())
                return part<QAbstractItemView>(name);
        return nullptr;
    }
    /// Of the view in sight.
    void clickShown(int row) const
    {
        QAbstractItemView& shown = *view();
        QTest::mouseClick(shown.viewport(), Qt::LeftButton, Qt::NoModifier,
                          shown.visualRect(shown.model()->index(row, 0)).center());
    }
    int row() const { return view()->currentIndex().row(); }
    QString markedTitle() const { return view()->model()->index(row(), 0).data().toString(); }
    /// What the panel of one song shows; null while it is hidden.
    QString shownTitle() const
    {
        return panel()->isVisible() ? panel()->findChild<RetractLabel*>("m_titleName")->getName() : QString();
    }
    DuplicateMusicDetailedWidget* group() const
    {
        return part<DuplicateMusicDetailedWidget>("m_dupMusicDetailedWidget");
    }
    QList<DupMusicbarWidget*> rows() const { return group()->findChildren<DupMusicbarWidget*>(); }
    /// The card of a song; null while none is to be seen.
    static ShowMusicInfoWidget* card()
    {
        for (QWidget* window : QApplication::topLevelWidgets())
            if (auto* found = qobject_cast<ShowMusicInfoWidget*>(window))
                if (found->isVisible())
                    return found;
        return nullptr;
    }
    QList<bool> kept() const
    {
        QList<bool> marks;
        for (const DupMusicbarWidget* each : rows())
            marks.append(each->isKept());
        return marks;
    }

    QStringList m_played; ///< titles, since the songs are there

private:
    void fillLocal(const QStringList& titles)
    {
        switchToLocal();
        QStringList paths;
        for (const QString& title : titles)
            paths.append(tone(QString("%1").arg(paths.size(), 3, 10, QLatin1Char('0')), title));
        add(paths);
    }
};
