#include "cli/commandline.h"

#include "base/failure.h"
#include "base/platform.h"
#include "base/text.h"
#include "collection/coretags.h"

#include <CLI/CLI.hpp>

#include <cstdio>
#include <map>
#include <memory>
#include <utility>

namespace {
constexpr std::size_t largestCover = 256u << 20;
constexpr std::size_t mostWords = 120; // bytes

const char* const exitCodes = R"(Exit codes:
  0    done
  1    something that --fail-on names was found
  2    the call makes no sense; nothing was done
  3    some files failed, each is named
  130  interrupted; nothing is half done)";

const char* const scanHelp = R"(Examples:
  melodrift-cli scan ~/Music
  melodrift-cli scan --json --exclude '*.wav' /srv/music
  melodrift-cli scan --fail-on undefined ~/Music)";
const char* const undefinedHelp = R"(Examples:
  melodrift-cli undefined ~/Music
  melodrift-cli undefined --ndjson ~/Music
  find ~/Music -newer yesterday -print0 | melodrift-cli undefined -0)";
const char* const duplicatesHelp =
    R"(By title+duration songs are grouped as in the window: those of exactly one title, where
the length of the first one is the length of any other song, too. By artist+title they are
one whatever their case, accents and width, without what stands in brackets or behind "feat."

Examples:
  melodrift-cli duplicates ~/Music
  melodrift-cli duplicates --by artist+title --json ~/Music ~/Downloads)";
const char* const cleanHelp =
    R"(Of each group one copy is kept, the one that the rules choose: each chooses among those that
the one before it left, and the first of those left at the end is it. Without --yes the plan
is shown, and on a terminal a question asked; nothing is done else. Files go into the trash,
from where "undo" brings them back. A file that a kept one needs, by whatever link, stays.
By title+duration songs of other artists may be in a group: look at the plan.

Rules: best, first, newest, oldest, largest, shortest-path, in:FOLDER

Examples:
  melodrift-cli clean --keep best ~/Music
  melodrift-cli clean --keep in:$HOME/Music --keep best --by artist+title --yes ~/Music ~/Downloads)";
const char* const undoHelp =
    R"(Without a number the newest step is taken back. A file that is not as the step left it stays
as it is. What was deleted for good does not come back.

Examples:
  melodrift-cli undo
  melodrift-cli undo 7)";
const char* const historyHelp = R"(Examples:
  melodrift-cli history
  melodrift-cli history -v)";
const char* const showHelp = R"(Examples:
  melodrift-cli show song.mp3
  melodrift-cli show --json *.flac)";
const char* const coverHelp = R"(Examples:
  melodrift-cli cover song.mp3 --out cover.jpg
  melodrift-cli cover song.mp3 --out - | file -)";
const char* const tagHelp =
    R"(A song's file is exchanged whole, or stays as it is. What is not named keeps its bytes.
A pattern has {title}, {artist}, {album}, {genre}, {year}, {track} and {ignore}, and a "/"
for each folder that it looks at; it is compared with the name without its ending.

Examples:
  melodrift-cli tag --artist 'Ida Marlowe' --clear genre *.mp3
  melodrift-cli tag --cover front.jpg album/*.flac
  melodrift-cli tag --from-name '{artist}/{album}/{track} {title}' */*/*.mp3)";

/// What has no place of its own in an order until all of it is known.
struct Raw
{
    std::vector<std::string> excluded;
    std::vector<std::string> failOn;
    std::map<std::string, std::string> texts; ///< by the names of fields
    std::vector<std::string> cleared;
    std::string cover;
    std::string fromName;
    std::vector<std::string> keep;
    std::string by = "title+duration";
    bool clearsCover = false;
    bool isJson = false;
    bool isLines = false;
};

[[noreturn]] void refuse(const std::string& option, const std::string& reason)
{
    throw CLI::ValidationError(option, reason);
}

void addPaths(CLI::App& app, const char* name, const char* help, Order& order)
{
    app.add_option(name, order.paths, help);
    app.add_option("--files-from", order.pathsFrom,
                   "Reads further paths from a file, one a line; \"-\" is the input")
        ->type_name("FILE");
    app.add_flag("-0,--null", order.pathsEndWithZero,
                 "Those end with a zero byte each; without --files-from they come from the input");
}

void addForms(CLI::App& app, Order& order, Raw& raw)
{
    CLI::Option* const json = app.add_flag("--json", raw.isJson, "Writes one JSON document");
    app.add_flag("--ndjson", raw.isLines, "Writes JSON, a line for each song, as it goes")->excludes(json);
    app.add_flag("-q,--quiet", order.isQuiet, "Says nothing but what failed");
    app.add_flag("-v,--verbose", order.isVerbose, "Says more");
}

void addWalk(CLI::App& app, Order& order, Raw& raw)
{
    app.add_flag("--hidden", order.rules.hidden, "Takes hidden files and folders, too");
    app.add_flag("--read-only", order.rules.unwritable, "Takes also what you cannot write");
    app.add_option("--exclude", raw.excluded, "Leaves out what is like a pattern, as '*.wav' or 'old/**'")
        ->type_name("GLOB")
        ->allow_extra_args(false)
        ->take_all();
    app.add_flag("--one-file-system", order.rules.oneFileSystem,
                 "Stays on the file system of each folder named");
}

void addFailOn(CLI::App& app, Raw& raw, const std::vector<std::string>& problems)
{
    app.add_option("--fail-on", raw.failOn, "Ends with 1 where such a thing is found; several with commas")
        ->type_name(CLI::detail::join(problems, "|"))
        ->delimiter(',')
        ->allow_extra_args(false)
        ->take_all()
        ->check(CLI::IsMember(problems));
}

CLI::App& addCommand(CLI::App& app, const char* name, const char* help, const char* footer, Order& order,
                     Order::Command command)
{
    CLI::App* const added = app.add_subcommand(name, help);
    added->footer(footer);
    added->callback([&order, command] { order.command = command; });
    return *added;
}

void addCleaning(CLI::App& app, Order& order, Raw& raw)
{
    app.add_option("--keep", raw.keep, "Which copy is kept; several rules by several options or with commas")
        ->type_name("RULE")
        ->required()
        ->delimiter(',')
        ->allow_extra_args(false)
        ->take_all();
    app.add_flag("--yes", order.isAgreed, "Does what the plan says");
    app.add_flag("--delete", order.deletesForGood, "Deletes for good, not into the trash");
}

void addReading(CLI::App& app, Order& order, Raw& raw)
{
    CLI::App& scan = addCommand(app, "scan", "Counts songs, per format and problem", scanHelp, order,
                                Order::Command::Scan);
    CLI::App& undefined = addCommand(
        app, "undefined", "Lists songs without title, artist, album or genre, and which is missing",
        undefinedHelp, order, Order::Command::Undefined);
    CLI::App& duplicates = addCommand(app, "duplicates", "Lists the groups of songs that are there twice",
                                      duplicatesHelp, order, Order::Command::Duplicates);
    CLI::App& clean = addCommand(app, "clean", "Deletes all copies of each group but one", cleanHelp, order,
                                 Order::Command::Clean);
    for (CLI::App* const command : {&scan, &undefined, &duplicates, &clean}) {
        addPaths(*command, "PATH", "Folders and music files", order);
        addWalk(*command, order, raw);
        addForms(*command, order, raw);
    }
    addFailOn(scan, raw, {"undefined", "title", "artist", "album", "genre", "cover"});
    addFailOn(undefined, raw, {"any", "title", "artist", "album", "genre"});
    addFailOn(duplicates, raw, {"any"});
    for (CLI::App* const command : {&duplicates, &clean})
        command->add_option("--by", raw.by, "What songs are compared by")
            ->type_name("RULE")
            ->check(CLI::IsMember(std::vector<std::string>{"title+duration", "artist+title"}));
    addCleaning(clean, order, raw);
    CLI::App& show = addCommand(app, "show", "Shows tags, properties and the size of the cover", showHelp,
                                order, Order::Command::Show);
    addPaths(show, "FILE", "Music files", order);
    addForms(show, order, raw);
}

void addEditing(CLI::App& app, Order& order, Raw& raw)
{
    CLI::App& cover = addCommand(app, "cover", "Writes a song's cover into a file of its own", coverHelp,
                                 order, Order::Command::Cover);
    cover.add_option("FILE", order.paths, "A music file")->required()->expected(1);
    cover.add_option("-o,--out", order.coverFile, "The picture's file; \"-\" is the output")
        ->required()
        ->type_name("PICTURE");
    cover.add_flag("--force", order.replaces, "Replaces what is there");
    cover.add_flag("-q,--quiet", order.isQuiet, "Says nothing but what failed");
    cover.add_flag("-v,--verbose", order.isVerbose, "Says more");

    CLI::App& tag =
        addCommand(app, "tag", "Sets or clears fields and covers", tagHelp, order, Order::Command::Tag);
    addPaths(tag, "FILE", "Music files", order);
    std::vector<std::string> names;
    for (const QString& field : TagFields::names()) {
        names.push_back(field.toStdString());
        tag.add_option_function<std::string>(
               "--" + names.back(),
               [&raw, name = names.back()](const std::string& text) { raw.texts[name] = text; },
               "Sets the " + names.back())
            ->type_name("TEXT");
    }
    tag.add_option("--clear", raw.cleared, "Clears a field; several with commas")
        ->type_name("FIELD")
        ->delimiter(',')
        ->allow_extra_args(false)
        ->take_all()
        ->check(CLI::IsMember(names));
    tag.add_option("--cover", raw.cover, "Takes the picture for the cover")->type_name("PICTURE");
    tag.add_flag("--clear-cover", raw.clearsCover, "Takes all pictures out")->excludes("--cover");
    tag.add_option("--from-name", raw.fromName, "Takes fields from the names of files")->type_name("PATTERN");
    addForms(tag, order, raw);
}

void addTakingBack(CLI::App& app, Order& order, Raw& raw)
{
    CLI::App& undo = addCommand(app, "undo", "Takes back what was changed, also by an earlier run", undoHelp,
                                order, Order::Command::Undo);
    undo.add_option("STEP", order.step, "The number of a step that \"history\" lists")
        ->check(CLI::PositiveNumber);
    CLI::App& history =
        addCommand(app, "history", "Lists what was changed", historyHelp, order, Order::Command::History);
    for (CLI::App* const command : {&undo, &history})
        addForms(*command, order, raw);
}

QByteArray pictureIn(const std::string& path)
{
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(base::openFile(path, false), std::fclose);
    base::FileState state;
    if (!file || !base::stateOf(file.get(), state))
        refuse("--cover", path + ": " + base::systemFailure().text);
    if (!state.regular || std::uint64_t(state.size) > largestCover)
        refuse("--cover", path + (state.regular ? ": it is too large" : ": it is no file"));
    QByteArray bytes(int(state.size), '\0');
    bytes.truncate(int(base::readAt(file.get(), 0, bytes.data(), std::size_t(bytes.size()))));
    if (!CoreTags::isPicture(bytes))
        refuse("--cover", path + ": it is no picture, JPEG or PNG");
    return bytes;
}

bool isNumber(const std::string& text)
{
    return !text.empty() && text.size() <= 4 && text.find_first_not_of("0123456789") == std::string::npos;
}

void takeText(Order& order, const std::string& field, const std::string& text)
{
    const std::string option = "--" + field;
    if (text.empty())
        refuse(option, "an empty text; --clear " + field + " clears it");
    if (!base::isUtf8(text))
        refuse(option, "the text is no UTF-8");
    if ((field == "year" || field == "track") && !isNumber(text))
        refuse(option, "not a number of up to four digits: " + text);
    order.edit.texts[QString::fromStdString(field)] = QString::fromStdString(text);
}

void takeEdit(Order& order, const Raw& raw)
{
    for (const auto& [field, text] : raw.texts)
        takeText(order, field, text);
    for (const std::string& field : raw.cleared) {
        if (raw.texts.count(field) > 0)
            refuse("--clear", field + " is to be set, too");
        order.edit.texts[QString::fromStdString(field)] = QString();
    }
    if (!raw.cover.empty())
        order.edit.picture = pictureIn(raw.cover);
    else if (raw.clearsCover)
        order.edit.picture = QByteArray();
    if (!raw.fromName.empty()) {
        QString wrong;
        order.fromName = NamePattern(QString::fromStdString(raw.fromName), wrong);
        if (!wrong.isEmpty())
            refuse("--from-name", raw.fromName + ": " + wrong.toStdString());
    }
    if (order.edit.isEmpty() && order.fromName.isEmpty())
        refuse("tag", "nothing to change is named");
}

void takePaths(Order& order)
{
    if (order.pathsEndWithZero && order.pathsFrom.empty())
        order.pathsFrom = "-";
    if (order.paths.empty() && order.pathsFrom.empty())
        refuse(order.command == Order::Command::Show || order.command == Order::Command::Tag ? "FILE"
                                                                                             : "PATH",
               "none is named");
    for (const std::string& path : order.paths)
        if (path.empty())
            refuse("PATH", "an empty one");
}

void takeRules(Order& order, const Raw& raw)
{
    for (const std::string& pattern : raw.excluded) {
        std::string wrong;
        order.rules.excluded.emplace_back(pattern, wrong);
        if (!wrong.empty())
            refuse("--exclude", wrong.insert(0, pattern + ": "));
    }
    for (const std::string& name : raw.keep) {
        QString problem;
        const std::optional<KeepRule> rule = KeepRule::named(name, problem);
        if (!rule)
            refuse("--keep", problem.toStdString());
        order.keep.append(*rule);
    }
}

void takeRaw(Order& order, const Raw& raw)
{
    order.form = raw.isJson ? Order::Form::Json : raw.isLines ? Order::Form::Lines : Order::Form::Text;
    order.failOn.insert(raw.failOn.begin(), raw.failOn.end());
    order.by = raw.by == "artist+title" ? SongList::By::ArtistAndTitle : SongList::By::TitleAndDuration;
    takeRules(order, raw);
    if (order.command != Order::Command::Undo && order.command != Order::Command::History)
        takePaths(order);
    if (order.command == Order::Command::Tag)
        takeEdit(order, raw);
}

/// On one line, whatever an argument holds.
void complain(const std::string& reason)
{
    std::string line = base::shownName(reason);
    for (char& c : line)
        if (static_cast<unsigned char>(c) < 0x20 || c == 0x7F)
            c = '?';
    std::fprintf(stderr, "melodrift-cli: %s\n", line.c_str());
}
/// The call as the history names it: there may be many paths.
std::string wordsOf(int argc, char* argv[])
{
    std::string words = argv[1];
    for (int i = 2; i < argc && words.size() < mostWords; ++i)
        words += std::string(" ") + argv[i];
    return words.size() < mostWords ? words : words.substr(0, mostWords) + "...";
}

std::string reasonWithoutCommand(int argc, char* argv[])
{
    return argc > 1 ? std::string("there is no command or option ") + argv[1]
                    : std::string("no command is named; --help lists them");
}
} // namespace

std::optional<Order> CommandLine::read(int argc, char* argv[], int& exitCode)
{
    Order order;
    Raw raw;
    order.rules.hidden = false;
    CLI::App app("Tidies a music collection.", "melodrift-cli");
    app.set_version_flag("--version", std::string("melodrift-cli ") + MELODRIFT_VERSION);
    app.require_subcommand(1);
    app.footer(exitCodes);
    addReading(app, order, raw);
    addEditing(app, order, raw);
    addTakingBack(app, order, raw);
    try {
        app.parse(argc, argv);
        takeRaw(order, raw);
        order.words = wordsOf(argc, argv);
        return order;
    } catch (const CLI::Success& answer) { // help, the version
        exitCode = app.exit(answer);
    } catch (const CLI::Error& error) {
        const bool hasCommand = !app.get_subcommands().empty();
        complain(hasCommand ? error.what() : reasonWithoutCommand(argc, argv));
        exitCode = wrongCall;
    }
    return std::nullopt;
}
