#pragma once

#include <QString>

/// What makes two songs of different spelling one. Any thread.
namespace SongLikeness {
/// A song by artist and title, as people mean them: equal for "Beyoncé" and "BEYONCE", "Halo (Live)" and
/// "Halo", "Duet feat. Somebody" and "Duet". Empty where one of the two is.
///
/// 1. Remarks in brackets, (), [], {} and the wide ones, are dropped, unless the text is nothing else.
/// 2. "feat.", "ft." and "featuring" are dropped with all that follows; of an artist "feat" and "ft", too.
/// 3. Case, accents, width, ligatures, the shape of quotes and dashes, and the number of blanks are no
/// matter (TextFolding).
QString artistAndTitle(const QString& artist, const QString& title);
} // namespace SongLikeness
