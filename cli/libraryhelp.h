#pragma once

/// What the help of the commands about a music library ends with.
namespace LibraryHelp {
constexpr const char* library =
    R"(FILE is the XML file that the music program keeps its library in. Looking changes nothing, neither
there nor beside it.

Examples:
  melodrift-cli library ~/Music/iTunes/iTunes\ Library.xml scan
  melodrift-cli library Library.xml clean --keep best)";
constexpr const char* scan = R"(Examples:
  melodrift-cli library Library.xml scan
  melodrift-cli library Library.xml scan --json --fail-on missing)";
constexpr const char* undefined = R"(Examples:
  melodrift-cli library Library.xml undefined
  melodrift-cli library Library.xml undefined --ndjson)";
constexpr const char* duplicates =
    R"(Tracks are compared by what the library says of them, as the window does it. What is no song, or has no
file on this machine, is left out.

Examples:
  melodrift-cli library Library.xml duplicates
  melodrift-cli library Library.xml duplicates --by artist+title --json)";
constexpr const char* clean =
    R"(Of each group one track is kept, the one that the rules choose; the others leave the library and all its
playlists, and then their files go into the trash. "undo" has both as before, the library byte for
byte, as long as nobody else changed it. A file that any track left needs, by whatever link, stays,
and so does what is no music by its name. Without --yes the plan is shown, and on a terminal a
question asked; nothing is done else. While the music program runs, it may write the library anew
as it knew it: end it first.

Rules: best, first, newest, oldest, largest, shortest-path, in:FOLDER

Examples:
  melodrift-cli library Library.xml clean --keep best
  melodrift-cli library Library.xml clean --keep in:$HOME/Music --keep best --yes)";
constexpr const char* check =
    R"(Problems: missing, a file that is not there; no-file, none on this machine; changed, a file of another
size than the library says; shared, a file that another track has; identifier, a track that cannot be
told from another; journal, changes that were not written yet, or not whole.

Examples:
  melodrift-cli library Library.xml check
  melodrift-cli library Library.xml check --fail-on missing,shared)";
} // namespace LibraryHelp
