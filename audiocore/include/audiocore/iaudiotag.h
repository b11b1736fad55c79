#pragma once

#include "audiocore/tagitem.h"

#include <new>

/// Reads and writes the tag of one music file.
///
/// The order of the virtual operations is a binary contract: callers may go through the slot number, so no
/// operation moves, none is added before the last one, and there is no virtual destructor. An object is a
/// thin handle; what stands behind it belongs to the library, so releasing the handle's memory (::operator
/// delete) or keeping it for the whole run are both well defined.
///
/// Calls on one object come from one thread at a time, not always the same. Results are 0 on success, another
/// value on failure; a failure is logged with the path and the reason, and leaves the file as it was.
class IAudioTag
{
public:
    /// Slot 0. Takes the file at `path`, zero-terminated UTF-32, in which U+DC80 to U+DCFF stand for the
    /// bytes of a name that is no UTF-8. Keeps no file descriptor. A file that cannot be read has no items.
    virtual std::int32_t Open(const char32_t* path) = 0;
    /// Slot 1, not called.
    virtual void Reserved1() = 0;
    /// Slot 2. Lets go of the file; no items afterwards. Allowed from any thread.
    virtual std::int32_t Close() = 0;
    /// Slot 3, not called.
    virtual void Reserved3() = 0;
    /// Slot 4. Writes all items changed since Open back into the file: whole, or not at all.
    virtual std::int32_t Save() = 0;
    /// Slot 5. Number of items, 0 or less when there are none.
    virtual std::int32_t GetItemCount() = 0;
    /// Slot 6. Item `index`, 0 to count - 1; an item of size 0 for any other index.
    virtual TagItem GetItem(std::int32_t index) = 0;
    /// Slots 7 and 8, not called.
    virtual void Reserved7() = 0;
    virtual void Reserved8() = 0;
    /// Slot 9. Adds an item; bytes are copied. Nothing reaches the file before Save.
    virtual std::int32_t SetItem(TagItem item) = 0;
    /// Slots 10 and 11, not called.
    virtual void Reserved10() = 0;
    virtual void Reserved11() = 0;
    /// Slot 12. Removes the items of a type. Nothing reaches the file before Save.
    virtual std::int32_t RemoveItem(std::int32_t type) = 0;

protected:
    ~IAudioTag() = default;
};

/// A new tag object, or null when memory is short.
IAudioTag* CreateTag();

/// Closes a tag object and gives its handle back; for owners that let one go before the run ends.
struct ReleaseTag
{
    void operator()(IAudioTag* tag) const
    {
        tag->Close();
        ::operator delete(tag);
    }
};
