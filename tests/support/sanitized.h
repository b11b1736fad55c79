#pragma once

/// Whether a sanitizer watches that takes memory and time of its own: what is looked for in many rounds is
/// looked for in the other build.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool sanitized = true;
#else
constexpr bool sanitized = false;
#endif

/// Whether other programs are asked what they hear in a file that was written. Starting one takes longer than
/// what is tested, and the bytes that it judges are the same in both builds.
constexpr bool judgesAreAsked = !sanitized;
