#pragma once

#include "audiocore/saveproblem.h"

#include <QString>

/// What users read of why a file was not saved.
namespace SaveProblemText {
/// "the disk is full"; a part of a sentence.
QString of(SaveProblem problem);
} // namespace SaveProblemText
