#pragma once

/// How far long work is, on the program's button of the task bar: the launcher interface on the session bus,
/// which desktops listen to that have it. Nothing where there is no such bus. GUI thread.
namespace LauncherProgress {
/// Costs little when called often: whole percents are told.
void show(int done, int total);
/// The work is over.
void end();
} // namespace LauncherProgress
