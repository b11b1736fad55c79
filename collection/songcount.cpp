#include "collection/songcount.h"

#include <new>
#include <system_error>
#include <utility>

SongCount::SongCount(FolderWalk::Rules rules, std::vector<std::string> paths)
{
    try {
        m_thread = std::thread([this, rules = std::move(rules), paths = std::move(paths)]() mutable {
            count(std::move(rules), paths);
        });
    } catch (const std::system_error&) {
        m_isDone = false; // then nobody knows
    }
}

SongCount::~SongCount()
{
    m_isEnding = true;
    if (m_thread.joinable())
        m_thread.join();
}

void SongCount::count(FolderWalk::Rules rules, const std::vector<std::string>& paths)
{
    try {
        FolderWalk walk(std::move(rules), *this);
        for (const std::string& path : paths)
            if (FolderWalk::isFolder(path))
                walk.walk(path);
            else
                ++m_found;
        m_isDone = true;
    } catch (const std::bad_alloc&) {
        m_isDone = false; // then nobody knows
    }
}
