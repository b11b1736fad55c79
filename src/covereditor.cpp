#include "covereditor.h"

#include "common/qimagewidget.h"
#include "covers/coverchoice.h"
#include "filechoice.h"
#include "keepoffers.h"
#include "songs/footlines.h"
#include "songs/songcover.h"
#include "songs/songediting.h"
#include "songs/songfields.h"

#include <QFileInfo>

CoverEditor::CoverEditor(QImageWidget& picture, KeepOffers& offers) : m_picture(picture), m_offers(offers)
{
    show(SkinPicture::path("bg_no_picture.png"));
    m_picture.setEnabled(false);
    connect(&m_offers, &KeepOffers::coverKept, this, &CoverEditor::keepOwn);
}

void CoverEditor::setSong(const QMusicInfo* song)
{
    if (song != m_pSong && m_newOrigin != Origin::Chosen)
        m_strNewPath.clear();
    m_pSong = song;
}

void CoverEditor::begin()
{
    m_picture.setToolTip(QStringLiteral("click to add cover"));
    m_picture.setEnabled(true);
    if (!m_strNewPath.isEmpty())
        show(m_strNewPath);
    offerToKeep();
}

void CoverEditor::end()
{
    m_picture.setEnabled(false);
    show(SongCover::shownPath(m_pSong));
}

void CoverEditor::showAnew()
{
    if (m_strNewPath.isEmpty())
        show(SongCover::shownPath(m_pSong));
    offerToKeep();
}

void CoverEditor::show(const QString& path)
{
    m_picture.SetImageBackgroud(path, true);
}

void CoverEditor::take(const QString& path, Origin origin)
{
    m_strNewPath = path;
    m_newOrigin = origin;
    show(path);
    offerToKeep();
}

void CoverEditor::keepOwn(bool keep)
{
    const QString own = SongFields::coverPath(m_pSong);
    take(keep ? own : QString(), Origin::Own);
    show(own);
}

bool CoverEditor::isOwnKept() const
{
    return m_newOrigin == Origin::Own && !m_strNewPath.isEmpty();
}

void CoverEditor::offerToKeep()
{
    const bool kept = isOwnKept();
    const bool otherShown = !kept && !m_strNewPath.isEmpty();
    m_offers.offerCover(SongEditing::takesCoverOut(m_pSong), otherShown, kept);
}

void CoverEditor::choose(QWidget* panel)
{
    const QMusicInfo* const song = m_pSong; // only compared: a mode switch may take it meanwhile
    const QString chosen = FileChoice::picture(panel);
    if (chosen.isEmpty() || !song || m_pSong != song)
        return;
    const CoverChoice::Choice choice = CoverChoice::embeddable(chosen, SongEditing::largestCover(*song));
    if (choice.path.isEmpty())
        emit told({FootLines::coverNotTaken(QFileInfo(chosen).fileName(), choice.reason), true, {}});
    else
        take(choice.path, Origin::Chosen);
}
