#pragma once

#include <algorithm>
#include <cstddef>
#include <optional>
#include <vector>

namespace audiocore {
/// More than any tag has. Each field takes memory of its own, and a few bytes of a file can claim to be one.
constexpr size_t mostFields = 100000;

/// Puts the new field in the place of the first old one and takes the further ones out; at the end when there
/// is none, and nowhere when there is no new one.
template <class Field, class Says>
void replaceFields(std::vector<Field>& fields, Says isOld, std::optional<Field> replacement)
{
    const auto place = std::find_if(fields.begin(), fields.end(), isOld) - fields.begin();
    fields.erase(std::remove_if(fields.begin(), fields.end(), isOld), fields.end());
    if (replacement)
        fields.insert(fields.begin() + place, std::move(*replacement));
}

/// The size of a block at a file's beginning that needs so many bytes and has that much room now: the old one
/// where it will do, so that the music need not move.
inline unsigned int paddedSize(unsigned int needed, unsigned int room)
{
    constexpr unsigned int usual = 1024;
    constexpr unsigned int most = 64 * 1024;
    return needed <= room && room - needed <= most ? room : needed + usual;
}
} // namespace audiocore
