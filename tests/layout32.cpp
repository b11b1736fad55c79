// Compiled for a system with 4-byte pointers and never run: where the fields of a track record lie there.
#include "itunes/itunestrackrecord.h"

#include <stddef.h>

static_assert(sizeof(void*) == 4, "compiled for 32 bits");
static_assert(sizeof(iTunesTrackRecord) == 172, "record");
static_assert(offsetof(iTunesTrackRecord, name) == 12, "name");
static_assert(offsetof(iTunesTrackRecord, artist) == 16, "artist");
static_assert(offsetof(iTunesTrackRecord, album) == 24, "album");
static_assert(offsetof(iTunesTrackRecord, genre) == 28, "genre");
static_assert(offsetof(iTunesTrackRecord, kind) == 32, "kind");
static_assert(offsetof(iTunesTrackRecord, size) == 36, "size");
static_assert(offsetof(iTunesTrackRecord, duration) == 44, "duration");
static_assert(offsetof(iTunesTrackRecord, trackNumber) == 52, "trackNumber");
static_assert(offsetof(iTunesTrackRecord, year) == 60, "year");
static_assert(offsetof(iTunesTrackRecord, bitRate) == 84, "bitRate");
static_assert(offsetof(iTunesTrackRecord, sampleRate) == 92, "sampleRate");
static_assert(offsetof(iTunesTrackRecord, persistentId) == 124, "persistentId");
static_assert(offsetof(iTunesTrackRecord, skipA) == 132, "skipA");
static_assert(offsetof(iTunesTrackRecord, skipB) == 133, "skipB");
static_assert(offsetof(iTunesTrackRecord, location) == 152, "location");
