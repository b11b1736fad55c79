#pragma once

// Precompiled, it comes before every test's own code.
#include <QtTest>

/// How long a test waits for what comes as soon as the machine has time for it, in milliseconds. Only what
/// never comes takes so long: a test on a busy machine is slow, not red.
constexpr int patience = 300000;

#undef QTRY_VERIFY
#define QTRY_VERIFY(expression) QTRY_VERIFY_WITH_TIMEOUT((expression), patience)
#undef QTRY_COMPARE
#define QTRY_COMPARE(actual, expected) QTRY_COMPARE_WITH_TIMEOUT((actual), (expected), patience)
