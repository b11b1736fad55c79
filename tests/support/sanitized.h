#pragma once

/// Whether a sanitizer watches that takes memory and time of its own: what is looked for in many rounds is
/// looked for in the other build.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool sanitized = true;
#else
constexpr bool sanitized = false;
#endif
