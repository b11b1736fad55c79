#pragma once

#include "identify/musicbrainz.h"
#include "identify/songhints.h"

#include <vector>

namespace audiocore {
/// How well a recording fits what a file says of itself, 0 to 1; 0 for one that it is not. Which it is not:
///
/// - the title is less than 0.85 close, or has other numbers ("Part 1" and "Part II"); guests, and additions
///   such as "(2011 Remaster)" or "[Explicit]", are no part of a title;
/// - the file names artists who are less than 0.8 close to the recording's credit, to the first of its
/// artists
///   by any name, and to the first ones; and so is the first of the file's;
/// - the file names none, unless the recording is on its album, and both lengths are known;
/// - both lengths are known and lie more than 7 seconds apart;
/// - the file's title names a version, "live", "remix", "demo" and the like, that the recording is not;
/// - the recording is a version that neither the file's title nor its album names, or either is of a concert,
///   each of which is much like the other; unless the recording is on the file's album.
///
/// "On its album" is: a release of it is named 0.85 close to the file's. All others get the mean of
///
///     40 title, 30 artist, 15 length (1 at the same, 0.5 at 7 seconds, 0 when either is unknown),
///     10 album (the closest of its releases), 5 the service's score
///
/// where artist or album count only if the file names them.
double fitOf(const musicbrainz::FoundRecording& recording, const SongHints& hints);

/// The recording that fits best; null when none fits by 0.84. Of those that fit as well but for 0.03 the one
/// with the best release: official ones come first, of these the albums before compilations, then the
/// earliest.
const musicbrainz::FoundRecording* chooseFitting(const std::vector<musicbrainz::FoundRecording>& recordings,
                                                 const SongHints& hints);
} // namespace audiocore
