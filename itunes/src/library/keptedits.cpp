#include "library/keptedits.h"

#include <algorithm>
#include <utility>

using itunes::KeptEdit;
using itunes::KeptEdits;

namespace {
std::size_t pictureBytes(const KeptEdit& edit)
{
    return edit.tags.picture ? edit.tags.picture->size() : 0;
}

std::size_t textBytes(const KeptEdit& edit)
{
    std::size_t bytes = edit.mediaPath.size() + edit.values.name.size() + edit.values.artist.size() +
                        edit.values.album.size() + edit.values.genre.size();
    for (const auto* text : {&edit.edit.name, &edit.edit.artist, &edit.edit.album, &edit.edit.genre,
                             &edit.tags.name, &edit.tags.artist, &edit.tags.album, &edit.tags.genre})
        bytes += *text ? (*text)->size() : 0;
    return bytes;
}
} // namespace

void KeptEdits::add(KeptEdit edit)
{
    m_edits.push_back(std::move(edit));
    std::size_t pictures = 0;
    for (const KeptEdit& kept : m_edits)
        pictures += pictureBytes(kept);
    while (m_edits.size() > most || pictures > mostPictureBytes) {
        pictures -= pictureBytes(m_edits.front());
        m_edits.pop_front();
    }
}

std::optional<KeptEdit> KeptEdits::take(std::uint64_t id)
{
    const auto found =
        std::find_if(m_edits.rbegin(), m_edits.rend(), [id](const KeptEdit& edit) { return edit.id == id; });
    if (found == m_edits.rend())
        return std::nullopt;
    KeptEdit taken = std::move(*found);
    m_edits.erase(std::next(found).base());
    return taken;
}

void KeptEdits::tookBack(const KeptEdit& edit, const base::FileState& media)
{
    for (KeptEdit& earlier : m_edits)
        if (earlier.mediaPath == edit.mediaPath && earlier.after.hasContentOf(edit.before))
            earlier.after = media;
}

void KeptEdits::forget()
{
    m_edits.clear();
}

std::size_t KeptEdits::bytes() const
{
    std::size_t bytes = 0;
    for (const KeptEdit& edit : m_edits)
        bytes += sizeof edit + pictureBytes(edit) + textBytes(edit);
    return bytes;
}
