#pragma once

/// Gets the music program ready for the application's run: on macOS asks the system to start it in the
/// background; elsewhere there is no such program to start. Returns at once, and never fails visibly.
void launchiTunes();
