#pragma once

#include "collection/changestep.h"

#include <QString>

#include <string>

/// What commands that change tags share.
namespace Saving {
/// ChangeStep::edit by the audio core, whose log tells the reason where nothing else does.
QString edit(ChangeStep& step, const std::string& path, const TagTexts& change, ChangeStep::Edited& edited);
} // namespace Saving
