#include "cli/commandline.h"

#include "base/failure.h"
#include "base/platform.h"
#include "base/text.h"
#include "cli/commandhelp.h"
#include "cli/libraryhelp.h"
#include "collection/coretags.h"
#include "collection/libraryproblems.h"

#include <CLI/CLI.hpp>

#include <cstdio>
#include <iterator>
#include <map>
#include <memory>
#include <utility>

namespace {
constexpr std::size_t largestCover = 256u << 20;
constexpr std::size_t mostWords = 120; // bytes

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

const std::map<std::string, SongList::By>& rulesByName()
{
    static const std::map<std::string, SongList::By> rules = {
        {"title+duration", SongList::By::TitleAndDuration},
        {"artist+title", SongList::By::ArtistAndTitle},
        {"sound", SongList::By::Sound},
        {"content", SongList::By::Content}};
    return rules;
}

std::vector<std::string> namesOfRules()
{
    std::vector<std::string> names;
    for (const auto& rule : rulesByName())
        names.push_back(rule.first);
    return names;
}

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

void addComparing(CLI::App& app, Raw& raw, const std::vector<std::string>& rules)
{
    app.add_option("--by", raw.by, "What songs are compared by")
        ->type_name("RULE")
        ->check(CLI::IsMember(rules));
}

/// The commands about the file of a music library, which is named before them.
void addLibrary(CLI::App& app, Order& order, Raw& raw)
{
    CLI::App& library = *app.add_subcommand("library", "Does the like with a music library");
    library.footer(LibraryHelp::library);
    library.require_subcommand(1);
    library.add_option("FILE", order.library, "The library's file, XML")->required();
    CLI::App& scan = addCommand(library, "scan", "Counts tracks, per kind and problem", LibraryHelp::scan,
                                order, Order::Command::Scan);
    CLI::App& undefined = addCommand(
        library, "undefined", "Lists tracks without title, artist, album or genre, and which is missing",
        LibraryHelp::undefined, order, Order::Command::Undefined);
    CLI::App& duplicates =
        addCommand(library, "duplicates", "Lists the groups of tracks that are there twice",
                   LibraryHelp::duplicates, order, Order::Command::Duplicates);
    CLI::App& clean =
        addCommand(library, "clean", "Takes all tracks of each group out but one, and their files away",
                   LibraryHelp::clean, order, Order::Command::Clean);
    CLI::App& check = addCommand(library, "check", "Lists what is wrong with the library", LibraryHelp::check,
                                 order, Order::Command::Check);
    for (CLI::App* const command : {&scan, &undefined, &duplicates, &clean, &check})
        addForms(*command, order, raw);
    for (CLI::App* const command : {&duplicates, &clean})
        addComparing(*command, raw, {"title+duration", "artist+title"});
    addFailOn(scan, raw, {"undefined", "title", "artist", "album", "genre", "missing"});
    addFailOn(undefined, raw, {"any", "title", "artist", "album", "genre"});
    addFailOn(duplicates, raw, {"any"});
    std::vector<std::string> problems = {"any"};
    problems.insert(problems.end(), std::begin(LibraryProblems::kinds), std::end(LibraryProblems::kinds));
    addFailOn(check, raw, problems);
    addCleaning(clean, order, raw);
}

void addReading(CLI::App& app, Order& order, Raw& raw)
{
    CLI::App& scan = addCommand(app, "scan", "Counts songs, per format and problem", CommandHelp::scan, order,
                                Order::Command::Scan);
    CLI::App& undefined = addCommand(
        app, "undefined", "Lists songs without title, artist, album or genre, and which is missing",
        CommandHelp::undefined, order, Order::Command::Undefined);
    CLI::App& duplicates = addCommand(app, "duplicates", "Lists the groups of songs that are there twice",
                                      CommandHelp::duplicates, order, Order::Command::Duplicates);
    CLI::App& clean = addCommand(app, "clean", "Deletes all copies of each group but one", CommandHelp::clean,
                                 order, Order::Command::Clean);
    for (CLI::App* const command : {&scan, &undefined, &duplicates, &clean}) {
        addPaths(*command, "PATH", "Folders and music files", order);
        addWalk(*command, order, raw);
        addForms(*command, order, raw);
    }
    addFailOn(scan, raw, {"undefined", "title", "artist", "album", "genre", "cover"});
    addFailOn(undefined, raw, {"any", "title", "artist", "album", "genre"});
    addFailOn(duplicates, raw, {"any"});
    for (CLI::App* const command : {&duplicates, &clean})
        addComparing(*command, raw, namesOfRules());
    addCleaning(clean, order, raw);
    CLI::App& show = addCommand(app, "show", "Shows tags, properties and the size of the cover",
                                CommandHelp::show, order, Order::Command::Show);
    addPaths(show, "FILE", "Music files", order);
    addForms(show, order, raw);
}

void addEditing(CLI::App& app, Order& order, Raw& raw)
{
    CLI::App& cover = addCommand(app, "cover", "Writes a song's cover into a file of its own",
                                 CommandHelp::cover, order, Order::Command::Cover);
    cover.add_option("FILE", order.paths, "A music file")->required()->expected(1);
    cover.add_option("-o,--out", order.coverFile, "The picture's file; \"-\" is the output")
        ->required()
        ->type_name("PICTURE");
    cover.add_flag("--force", order.replaces, "Replaces what is there");
    cover.add_flag("-q,--quiet", order.isQuiet, "Says nothing but what failed");
    cover.add_flag("-v,--verbose", order.isVerbose, "Says more");

    CLI::App& tag = addCommand(app, "tag", "Sets or clears fields and covers", CommandHelp::tag, order,
                               Order::Command::Tag);
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
    CLI::App& undo = addCommand(app, "undo", "Takes back what was changed, also by an earlier run",
                                CommandHelp::undo, order, Order::Command::Undo);
    undo.add_option("STEP", order.step, "The number of a step that \"history\" lists")
        ->check(CLI::PositiveNumber);
    CLI::App& history = addCommand(app, "history", "Lists what was changed", CommandHelp::history, order,
                                   Order::Command::History);
    for (CLI::App* const command : {&undo, &history})
        addForms(*command, order, raw);
}

void addIdentifying(CLI::App& app, Order& order, Raw& raw)
{
    CLI::App& identify = addCommand(app, "identify", "Asks online services which songs these are",
                                    CommandHelp::identify, order, Order::Command::Identify);
    addPaths(identify, "PATH", "Folders and music files", order);
    addWalk(identify, order, raw);
    addForms(identify, order, raw);
    addFailOn(identify, raw, {"no-match"});
    CLI::Option* const write =
        identify.add_flag("--write", order.writes, "Writes what is found into the songs' tags");
    identify.add_flag("--only-missing", order.onlyMissing, "Fills empty fields alone, and a missing cover");
    identify.add_flag("--yes", order.isAgreed, "Writes without asking")->needs(write);
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
    order.by = rulesByName().at(raw.by);
    takeRules(order, raw);
    if (order.library.empty() && order.command != Order::Command::Undo &&
        order.command != Order::Command::History)
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

/// What an error says; of a word that stands where a command should, which one.
std::string reasonOf(const CLI::Error& error, const CLI::App& command)
{
    const bool lacksCommand = command.get_require_subcommand_min() > 0 && command.get_subcommands().empty();
    const std::vector<std::string> words = lacksCommand ? command.remaining() : std::vector<std::string>();
    return words.empty() ? error.what() : "there is no command or option " + words.front();
}

std::string reasonWithoutCommand(int argc, char* argv[])
{
    return argc > 1 ? std::string("there is no command or option ") + argv[1]
                    : std::string("no command is named; --help lists them");
}

void addAll(CLI::App& app, Order& order, Raw& raw)
{
    order.rules.hidden = false;
    app.set_version_flag("--version", std::string("melodrift-cli ") + MELODRIFT_VERSION);
    app.require_subcommand(1);
    app.footer(CommandHelp::exitCodes);
    addReading(app, order, raw);
    addIdentifying(app, order, raw);
    addEditing(app, order, raw);
    addLibrary(app, order, raw);
    addTakingBack(app, order, raw);
}

const char* const aim = "Tidies a music collection.";
const char* const programName = "melodrift-cli";
} // namespace

void CommandLine::tell(const std::function<void(const CLI::App&)>& listener)
{
    Order order;
    Raw raw;
    CLI::App app(aim, programName);
    addAll(app, order, raw);
    listener(app);
}

std::optional<Order> CommandLine::read(int argc, char* argv[], int& exitCode)
{
    Order order;
    Raw raw;
    CLI::App app(aim, programName);
    addAll(app, order, raw);
    try {
        app.parse(argc, argv);
        takeRaw(order, raw);
        order.words = wordsOf(argc, argv);
        return order;
    } catch (const CLI::Success& answer) { // help, the version
        exitCode = app.exit(answer);
    } catch (const CLI::Error& error) {
        const std::vector<CLI::App*> commands = app.get_subcommands();
        complain(commands.empty() ? reasonWithoutCommand(argc, argv) : reasonOf(error, *commands.front()));
        exitCode = wrongCall;
    }
    return std::nullopt;
}
