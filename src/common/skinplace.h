#pragma once

#include <QString>

namespace SkinPlace {
/// The directory that holds "/Image", "/pic" and the help pages, without a separator at its end: where the
/// executable lies. Needs an application object. Any thread.
QString folder();
} // namespace SkinPlace
