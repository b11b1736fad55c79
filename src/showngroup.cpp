#include "showngroup.h"

#include "duplicatemusicdetailedwidget.h"
#include "dupmusicinfo.h"
#include "songs/songclassification.h"
#include "songviews.h"

#include <QAbstractItemView>

int ShownGroup::next() const
{
    DupMusicInfo* const group = isLeft() ? m_songs.groups().at(int(m_nCurrentDupRow)) : nullptr;
    const int row = group ? m_views.rowOf(group) : -1;
    const int next =
        SongClassification::rowAfter(row >= 0 ? row : m_views.groupPlace(), row >= 0, m_views.groupCount());
    return next >= 0 ? m_songs.groups().indexOf(m_views.groupAt(next)) : -1;
}

int ShownGroup::rowBeside(int steps) const
{
    const int marked = m_views.view(true, true)->currentIndex().row();
    // One that is gone has no mark: those behind it have moved up to where it was.
    const int row = marked >= 0 ? marked + steps : m_views.groupPlace() + qMin(steps, 0);
    return row < m_views.groupCount() ? row : -1;
}

QList<QMusicInfo*> ShownGroup::keptSongs() const
{
    return m_panel.isVisible() ? m_panel.keptSongs() : QList<QMusicInfo*>();
}

void ShownGroup::show(const QModelIndex& index)
{
    show(SongViews::groupOf(index));
}

void ShownGroup::show(int row)
{
    show(m_songs.groups().value(row));
}

void ShownGroup::show(DupMusicInfo* group)
{
    m_nCurrentDupRow = m_songs.groups().indexOf(group);
    m_views.selectGroup(group);
    if (group)
        m_panel.SetDuplicateMusicDetailedInfo(&group->musicList);
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
        m_views.selectGroup(m_songs.groups().at(int(m_nCurrentDupRow)));
}

void ShownGroup::markOrHide()
{
    markAnew();
    if (!isLeft())
        m_panel.hide();
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
