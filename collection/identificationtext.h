#pragma once

#include <QString>

/// What people are told of an identification, in words that stand within a sentence.
namespace IdentificationText {
/// Why nothing was found; `status` is the identifier's (IdentifyStatus). Empty for one that tells of no
/// failure, or of what the user did himself.
QString whyNot(int status);
/// A sentence: what a key for identifying by sound would add, and where to get one.
QString keyOffer();
} // namespace IdentificationText
