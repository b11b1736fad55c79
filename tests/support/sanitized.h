#pragma once

/// Whether a sanitizer watches that takes memory and time of its own: what is looked for in many rounds is
/// looked for in the other build. A test's own code may be of either.
extern const bool sanitized;
