#include "sanitized.h"

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
const bool sanitized = true;
#else
const bool sanitized = false;
#endif

const bool judgesAreAsked = !sanitized;
