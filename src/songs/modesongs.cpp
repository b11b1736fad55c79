#include "songs/modesongs.h"

#include "audiocore/iaudiotag.h"
#include "qmusicinfo.h"

#include <utility>

ModeSongs::~ModeSongs()
{
    qDeleteAll(m_local);
}

SongLists ModeSongs::lists()
{
    return {m_pAll, &groups(), &undefined(), &m_localTags};
}

void ModeSongs::closeLocalTags()
{
    for (IAudioTag* tag : std::exchange(m_localTags, {}))
        if (tag)
            tag->Close();
}
