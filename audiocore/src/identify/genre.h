#pragma once

#include "identify/jsonreading.h"

#include <string>

namespace audiocore {
/// The name of the genre with the most votes among an entry's "genres", of equals the first; empty without
/// any.
std::string mostVotedGenre(const json::Value& entry);
/// "drum and bass" as "Drum and Bass", "r&b" as "R&B".
std::string capitalised(const std::string& genre);
} // namespace audiocore
