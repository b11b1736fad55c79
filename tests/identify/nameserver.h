#pragma once

/// Takes the place of the system's name resolution in the test program: names that begin with "slow." are
/// not answered until released; all others go to the system.
namespace NameServer {
/// Waits until `count` questions for slow names have come in all; false after ten seconds.
bool waitForQuestions(int count);
/// Answers all slow questions of now and later: there is no such name.
void release();
/// Makes slow names slow again.
void hold();
} // namespace NameServer
