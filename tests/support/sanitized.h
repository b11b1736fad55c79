#pragma once

/// Whether a sanitizer watches that takes memory and time of its own: what is looked for in many rounds is
/// looked for in the other build. A test's own code may be of either.
extern const bool sanitized;

/// Whether other programs are asked what they hear in a file that was written. Starting one takes longer than
/// what is tested, and the bytes that it judges are the same in both builds.
extern const bool judgesAreAsked;
