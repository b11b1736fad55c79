#pragma once

/// What the help of the commands ends with.
namespace CommandHelp {
constexpr const char* exitCodes = R"(Exit codes:
  0    done
  1    something that --fail-on names was found
  2    the call makes no sense; nothing was done
  3    some files failed, each is named
  130  interrupted; nothing is half done)";

constexpr const char* scan = R"(Examples:
  melodrift-cli scan ~/Music
  melodrift-cli scan --json --exclude '*.wav' /srv/music
  melodrift-cli scan --fail-on undefined ~/Music)";
constexpr const char* undefined = R"(Examples:
  melodrift-cli undefined ~/Music
  melodrift-cli undefined --ndjson ~/Music
  find ~/Music -newer yesterday -print0 | melodrift-cli undefined -0)";
constexpr const char* duplicates =
    R"(By title+duration songs are grouped as in the window: those of exactly one title, where
the length of the first one is the length of any other song, too. By artist+title they are
one whatever their case, accents and width, without what stands in brackets or behind "feat."
By sound they are one recording, whatever its format and tags; each file is decoded once, and
its fingerprint kept in the user's cache. By content they have the same music bytes, and differ
in their tags alone.

Examples:
  melodrift-cli duplicates ~/Music
  melodrift-cli duplicates --by artist+title --json ~/Music ~/Downloads
  melodrift-cli duplicates --by sound ~/Music)";
constexpr const char* clean =
    R"(Of each group one copy is kept, the one that the rules choose: each chooses among those that
the one before it left, and the first of those left at the end is it. Without --yes the plan
is shown, and on a terminal a question asked; nothing is done else. Files go into the trash,
from where "undo" brings them back. A file that a kept one needs, by whatever link, stays.
By title+duration songs of other artists may be in a group: look at the plan. What the other
rules of --by say, "duplicates --help" tells.

Rules: best, first, newest, oldest, largest, shortest-path, in:FOLDER

Examples:
  melodrift-cli clean --keep best ~/Music
  melodrift-cli clean --keep in:$HOME/Music --keep best --by artist+title --yes ~/Music ~/Downloads
  melodrift-cli clean --keep best --by sound ~/Music)";
constexpr const char* undo =
    R"(Without a number the newest step is taken back. A file that is not as the step left it stays
as it is. What was deleted for good does not come back.

Examples:
  melodrift-cli undo
  melodrift-cli undo 7)";
constexpr const char* history = R"(Examples:
  melodrift-cli history
  melodrift-cli history -v)";
constexpr const char* show = R"(Examples:
  melodrift-cli show song.mp3
  melodrift-cli show --json *.flac)";
constexpr const char* identify =
    R"(Songs are asked for one after the other, at the pace that the services ask for: by their
sound, where there is a key for that, or else by their tags, names and folders. Shown is what
is found, and what --write would change; a song without a match has not failed. Without --yes
nothing is written but after a typed yes; with it each song is written once it is found.

Examples:
  melodrift-cli identify song.mp3
  melodrift-cli identify --write --only-missing ~/Music/Unsorted
  melodrift-cli identify --write --yes --ndjson --fail-on no-match *.flac)";
constexpr const char* cover = R"(Examples:
  melodrift-cli cover song.mp3 --out cover.jpg
  melodrift-cli cover song.mp3 --out - | file -)";
constexpr const char* tag =
    R"(A song's file is exchanged whole, or stays as it is. What is not named keeps its bytes.
A pattern has {title}, {artist}, {album}, {genre}, {year}, {track} and {ignore}, and a "/"
for each folder that it looks at; it is compared with the name without its ending.

Examples:
  melodrift-cli tag --artist 'Ida Marlowe' --clear genre *.mp3
  melodrift-cli tag --cover front.jpg album/*.flac
  melodrift-cli tag --from-name '{artist}/{album}/{track} {title}' */*/*.mp3)";
} // namespace CommandHelp
