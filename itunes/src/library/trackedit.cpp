#include "library/trackedit.h"

using itunes::TrackChanges;
using itunes::TrackEdit;

namespace {
template <typename Value>
void takeDifference(const Value& asRead, const Value& wanted, std::optional<Value>& edit)
{
    if (asRead != wanted)
        edit = wanted;
}

template <typename Value>
void merge(const std::optional<Value>& later, std::optional<Value>& edit)
{
    if (later)
        edit = later;
}
} // namespace

TrackEdit itunes::differenceOf(const TrackValues& asRead, const TrackValues& wanted)
{
    TrackEdit edit;
    takeDifference(asRead.name, wanted.name, edit.name);
    takeDifference(asRead.artist, wanted.artist, edit.artist);
    takeDifference(asRead.album, wanted.album, edit.album);
    takeDifference(asRead.genre, wanted.genre, edit.genre);
    takeDifference(asRead.year, wanted.year, edit.year);
    return edit;
}

void itunes::mergeDeletion(TrackChanges& changes, std::uint64_t id)
{
    changes[id].deleted = true;
}

void itunes::mergeReturn(TrackChanges& changes, std::uint64_t id)
{
    const auto change = changes.find(id);
    if (change == changes.end())
        return;
    change->second.deleted = false;
    if (change->second.edit.isEmpty())
        changes.erase(change);
}

TrackChanges itunes::editsOfDeleted(const TrackChanges& changes)
{
    TrackChanges edits;
    for (const auto& [id, change] : changes)
        if (change.deleted && !change.edit.isEmpty())
            edits[id].edit = change.edit;
    return edits;
}

void itunes::mergeEdit(TrackChanges& changes, std::uint64_t id, const TrackEdit& edit)
{
    TrackChange& change = changes[id];
    if (change.deleted)
        return;
    merge(edit.name, change.edit.name);
    merge(edit.artist, change.edit.artist);
    merge(edit.album, change.edit.album);
    merge(edit.genre, change.edit.genre);
    merge(edit.year, change.edit.year);
}
