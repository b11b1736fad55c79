#include "songs/changehistory.h"

#include <utility>

void Change::fileCameBack(const QString&, const FileState&, const FileState&) {}

void ChangeHistory::add(std::unique_ptr<Change> change)
{
    if (!change)
        return;
    m_pictureBytes += change->pictureBytes();
    m_changes.push_back(std::move(change));
    while (int(m_changes.size()) > mostSteps || m_pictureBytes > mostPictureBytes) {
        m_pictureBytes -= m_changes.front()->pictureBytes();
        m_changes.pop_front();
    }
}

TakenBack ChangeHistory::takeBack(const Progress& progress)
{
    if (m_changes.empty())
        return TakenBack();
    const std::unique_ptr<Change> newest = std::move(m_changes.back());
    m_changes.pop_back();
    m_pictureBytes -= newest->pictureBytes();
    return newest->takeBack(*this, progress);
}

void ChangeHistory::fileCameBack(const QString& path, const FileState& was, const FileState& is)
{
    for (const std::unique_ptr<Change>& change : m_changes)
        change->fileCameBack(path, was, is);
}

void ChangeHistory::forget()
{
    m_changes.clear();
    m_pictureBytes = 0;
}
