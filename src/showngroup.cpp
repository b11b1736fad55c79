#include "showngroup.h"

#include "duplicatemusicdetailedwidget.h"
#include "dupmusicinfo.h"
#include "songs/songclassification.h"
#include "songviews.h"

#include <QAbstractItemModel>
#include <QAbstractItemView>

int ShownGroup::next() const
{
    return m_songs.rowAfter(int(m_nCurrentDupRow), isLeft());
}

int ShownGroup::rowBeside(int steps) const
{
    const QAbstractItemView* view = m_views.view(true, true);
    const int marked = view->currentIndex().row();
    // One that is gone has no mark: those behind it have moved up to where it was.
    const int row = marked >= 0 ? marked + steps : int(m_nCurrentDupRow) + qMin(steps, 0);
    return row < view->model()->rowCount() ? row : -1;
}

QList<QMusicInfo*> ShownGroup::keptSongs() const
{
    return m_panel.isVisible() ? m_panel.keptSongs() : QList<QMusicInfo*>();
}

void ShownGroup::show(const QModelIndex& index)
{
    m_nCurrentDupRow = index.row();
    m_views.selectGroup(index.row());
    if (DupMusicInfo* group = SongViews::groupOf(index))
        m_panel.SetDuplicateMusicDetailedInfo(&group->musicList);
}

void ShownGroup::show(int row)
{
    show(m_views.view(true, true)->model()->index(row, 0));
}

void ShownGroup::show(const QList<QMusicInfo*>& songs, const QList<QMusicInfo*>& kept)
{
    const int row = songs.isEmpty() ? -1 : m_songs.rowOf(songs.first());
    if (row < 0)
        return;
    show(row);
    m_panel.showKeeping(&m_songs.groups().at(row)->musicList, kept);
}

void ShownGroup::markAnew()
{
    if (isLeft())
        m_views.selectGroup(int(m_nCurrentDupRow));
}

void ShownGroup::forget()
{
    m_panel.hide();
    m_panel.SetDuplicateMusicDetailedInfo(nullptr);
}

/// A group that fell to one song is none any more.
bool ShownGroup::isLeft() const
{
    const DupMusicInfo* group = m_songs.groups().value(int(m_nCurrentDupRow));
    return group && m_panel.shows(group->musicList);
}
