#include "centerchanges.h"

#include "centerfoot.h"
#include "duplicatemusicdetailedwidget.h"
#include "groupdeletion.h"
#include "musicdetailedinfowidget.h"
#include "qmusicinfo.h"
#include "showngroup.h"
#include "songs/modesongs.h"
#include "songviews.h"
#include "viewinsight.h"
#include "views/songcells.h"

#include <QAbstractItemView>
#include <QScrollBar>

#include <utility>

using Kind = ViewInSight::Kind;

CenterChanges::CenterChanges(const Parts& parts, QWidget* area) : QObject(area), m_parts(parts), m_area(area)
{
    connect(&m_parts.foot, &CenterFoot::undone, this, &CenterChanges::showUndone);
}

void CenterChanges::classify()
{
    SongClassification& songs = m_parts.songs.classification();
    songs.collect(m_parts.songs.all());
    emit undefinedCounted(songs.undefinedSongs().size());
    m_parts.group.forget();
    songs.group();
    m_parts.views.refreshGroups();
    emit groupsCounted(songs.groups().size());
}

void CenterChanges::classifyLocal()
{
    SongClassification& songs = m_parts.songs.classification();
    songs.collect(m_parts.songs.all());
    songs.group();
    m_parts.views.showGroups(&songs.groups(), SongCells::columnModeDupTable);
    logCounts();
    tellCounts();
}

void CenterChanges::logCounts() const
{
    const SongClassification& songs = m_parts.songs.classification();
    qInfo("songs: %d, undefined: %d, duplicate groups: %d", m_parts.songs.all().size(),
          songs.undefinedSongs().size(), songs.groups().size());
}

void CenterChanges::clearClassification()
{
    m_parts.group.forget();
    m_parts.songs.classification().clear();
    m_parts.views.forgetTexts();
    m_parts.views.refreshGroups();
}

void CenterChanges::tellCounts()
{
    const SongClassification& songs = m_parts.songs.classification();
    emit counted(m_parts.songs.all().size(), songs.undefinedSongs().size(), songs.groups().size());
}

void CenterChanges::edited()
{
    QScrollBar* const bar = m_parts.inSight.view().verticalScrollBar();
    const int scrolled = bar->value();
    m_parts.views.forgetTexts();
    m_parts.views.refreshSongs();
    classify();
    if (m_parts.inSight.kind() == Kind::Undefined)
        m_parts.views.showSongs(&m_parts.songs.undefined());
    markShownSong();
    bar->setValue(scrolled);
    m_parts.foot.offerUndo();
}

void CenterChanges::editedAgain()
{
    m_parts.rows.hide();
    markShownSong();
}

/// Models that were reset have forgotten it.
void CenterChanges::markShownSong()
{
    m_parts.views.selectSong(m_parts.details.song());
}

void CenterChanges::remove(QMusicInfo* song)
{
    GroupClearing& clearing = m_parts.rows.clearing();
    if (const auto removed = clearing.takeOut(song, m_parts.group.row()))
        m_parts.foot.undo().songsLeft({*removed});
    m_left.insert(song);
    if (!clearing.isTakingOut())
        showWhatIsLeft();
    tellCounts();
    emit groupsCounted(m_parts.songs.groups().size());
}

void CenterChanges::showWhatIsLeft()
{
    m_parts.views.leave(std::exchange(m_left, {}));
    m_parts.inSight.show(Kind::Duplicates);
    m_parts.group.markAnew();
}

void CenterChanges::groupCleared()
{
    m_parts.group.markOrHide();
    m_parts.foot.tellOfDeletion(m_parts.rows.clearing().takeTally(), m_parts.group.next());
}

void CenterChanges::clearAll()
{
    m_parts.views.setGroupsEnabled(false);
    if (!m_parts.deletion.run(m_parts.songs.lists(), *m_area->window()))
        allCleared();
}

void CenterChanges::allCleared()
{
    m_parts.foot.undo().songsLeft(m_parts.deletion.finish());
    RemovalTally tally = m_parts.rows.clearing().takeTally();
    tally.add(m_parts.deletion.takeTally());
    m_parts.views.setGroupsEnabled(true);
    m_parts.group.forget();
    m_parts.views.forgetTexts();
    m_parts.views.refreshGroups();
    m_parts.views.refreshSongs();
    tellCounts();
    m_parts.foot.tellOfDeletion(tally);
}

void CenterChanges::takeBack()
{
    m_parts.foot.takeBack(m_parts.songs.lists(), *m_area->window());
}

/// The view in force stays. Of groups the one is shown that songs came back to, else the one shown before.
void CenterChanges::showUndone(const SongUndo::Undone& undone)
{
    const QList<QMusicInfo*> kept = m_parts.group.keptSongs();
    if (undone.edited && undone.edited == m_parts.details.song())
        m_parts.details.showAnew();
    edited();
    m_parts.inSight.showAnew();
    tellCounts();
    if (m_parts.inSight.kind() == Kind::Duplicates)
        m_parts.group.show(undone.returned.isEmpty() ? kept : undone.returned, kept);
}
