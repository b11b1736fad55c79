#include "collection/songintake.h"

#include "base/platform.h"

#include <utility>

SongIntake::SongIntake(FolderWalk::Rules rules, Receiver& receiver)
    : m_receiver(receiver), m_walk(std::move(rules), *this),
      m_reading([this](SongFile&& song) { tell(song); })
{
}

void SongIntake::add(const std::string& path)
{
    base::FileState state;
    if (FolderWalk::isFolder(path))
        m_walk.walk(path);
    else if (FolderWalk::isMusicName(path) || !base::stateOf(path, state))
        addFile(path);
    else
        m_receiver.leftOut(path, LeftOut::NotMusic);
}

void SongIntake::failed(const std::string& path, const std::string& reason)
{
    m_reading.add(SongFile::failed(path, reason)); // told in its turn
}

void SongIntake::leftOut(const std::string& path)
{
    m_receiver.leftOut(path, LeftOut::NotWritable);
}

void SongIntake::tell(const SongFile& song)
{
    if (!m_receiver.goesOn())
        return;
    if (song.isRead())
        m_receiver.song(song);
    else
        m_receiver.failed(song.path, song.whyNot);
}
