#pragma once

#include "common/textfit.h"

#include <QList>
#include <QString>

struct DupMusicInfo;
struct QMusicInfo;

/// What a deletion of duplicates would do, counted and put into words before it is done. GUI thread only.
namespace ClearingWords {
struct Question
{
    QString text;              ///< which songs go, and which stay
    QString files;             ///< what that means for files
    bool nothingStays = false; ///< of the group
};

/// Before songs of a group go. A title too long for the text to fit is shortened. Looks for the files.
Question beforeGroup(const QList<QMusicInfo*>& going, const QList<QMusicInfo*>& kept,
                     const TextFit::Fits& fits);

/// Before all groups are cleared: the one shown, if it is among them, by what is kept of it, then every other
/// one to its first song. Takes as long as there are groups.
QString beforeAll(const QList<DupMusicInfo*>& groups, const QList<QMusicInfo*>* shown,
                  const QList<QMusicInfo*>& kept);
} // namespace ClearingWords
