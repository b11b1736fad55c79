#pragma once

#include "songs/songclassification.h"
#include "songs/songremoval.h"

#include <QList>

class IAudioTag;
struct QMusicInfo;

/// The songs of the mode in force and what they were classified into. Owns those of the local mode.
class ModeSongs
{
public:
    ModeSongs() = default;
    ~ModeSongs();
    ModeSongs(const ModeSongs&) = delete;
    ModeSongs& operator=(const ModeSongs&) = delete;

    /// The list that is classified and shown: the local one unless another is used.
    QList<QMusicInfo*>& all() const { return *m_pAll; }
    /// The list stays the caller's and must outlive its use here.
    void use(QList<QMusicInfo*>& list) { m_pAll = &list; }
    void useLocal() { use(m_local); }
    /// What a deletion edits.
    SongLists lists();

    QList<QMusicInfo*>& local() { return m_local; }
    const QList<QMusicInfo*>& local() const { return m_local; }
    /// One per local song, same index; null where none could be made.
    QList<IAudioTag*>& localTags() { return m_localTags; }
    void closeLocalTags();

    SongClassification& classification() { return m_classification; }
    const SongClassification& classification() const { return m_classification; }
    QList<QMusicInfo*>& undefined() { return m_classification.undefinedSongs(); }
    QList<DupMusicInfo*>& groups() { return m_classification.groups(); }

private:
    QList<QMusicInfo*> m_local;
    QList<IAudioTag*> m_localTags;
    QList<QMusicInfo*>* m_pAll = &m_local;
    SongClassification m_classification;
};
