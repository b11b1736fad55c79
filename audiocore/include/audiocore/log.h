#pragma once

/// Receives one line of the library's log, UTF-8, without a line feed. Called on the thread that logs.
using AudioCoreLogSink = void (*)(const char* line);

/// Sets where log lines go; null: to the standard error stream, as before the first call.
void SetAudioCoreLogSink(AudioCoreLogSink sink);
