#pragma once

#include <QByteArray>

namespace Fixtures {
/// An APE file that is to be heard: noise that comes and goes, in stereo. There is no encoder at hand, but
/// the entropy coder alone makes a file whose samples are whatever the format's prediction makes of the
/// noise.
QByteArray noisyApe(int milliseconds);
} // namespace Fixtures
