#include "cli/describe/commandtable.h"

#include "cli/commandline.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cctype>
#include <tuple>
#include <utility>

namespace {
using Describe::Command;
using Describe::Option;

std::vector<std::string> split(const std::string& text, const std::string& between)
{
    std::vector<std::string> parts;
    std::size_t begin = 0;
    for (std::size_t end; (end = text.find(between, begin)) != std::string::npos;
         begin = end + between.size())
        parts.push_back(text.substr(begin, end - begin));
    parts.push_back(text.substr(begin));
    return parts;
}

/// "FIELD:{title,artist}" is a FIELD that is one of two.
void takeType(Option& option, const std::string& type)
{
    option.value = type.substr(0, type.find(':'));
    const std::size_t begin = type.find('{');
    const std::size_t end = type.rfind('}');
    if (begin != std::string::npos && end != std::string::npos)
        option.choices = split(type.substr(begin + 1, end - begin - 1), ",");
}

/// "title|artist" says as much.
void takeAlternatives(Option& option)
{
    if (option.choices.empty() && option.value.find('|') != std::string::npos)
        option.choices = split(option.value, "|");
    if (!option.choices.empty() && split(option.value, "|") == option.choices)
        option.value = "KIND";
}

/// A line of the notes says what a value may be that no list can hold whole: "Rules: best, in:FOLDER".
void takeNotes(Option& option, const std::string& notes)
{
    if (option.value.empty() || !option.choices.empty())
        return;
    std::string plural = option.value.substr(0, 1);
    for (const char c : option.value.substr(1))
        plural += char(std::tolower(static_cast<unsigned char>(c)));
    plural += "s: ";
    for (const std::string& line : split(notes, "\n"))
        if (line.compare(0, plural.size(), plural) == 0)
            option.choices = split(line.substr(plural.size()), ", ");
}

Option optionOf(const CLI::Option& told, const std::string& notes)
{
    Option option;
    for (const std::string& name : told.get_snames())
        option.names.push_back('-' + name);
    for (const std::string& name : told.get_lnames())
        option.names.push_back("--" + name);
    option.help = told.get_description();
    option.isRequired = told.get_required();
    option.isRepeated = told.get_items_expected_max() > 1;
    if (told.get_items_expected_max() > 0)
        takeType(option, told.get_type_name());
    if (option.names.empty())
        option.value = told.get_name(true);
    takeAlternatives(option);
    takeNotes(option, notes);
    return option;
}

/// The words that lead to a command below this one.
void lead(const Command& above, const std::string& name, Command& command)
{
    command.path = above.path;
    command.path.push_back(name);
    command.call = above.call + (above.call.empty() ? "" : " ");
    for (const Option& place : above.places)
        command.call += place.value + ' ';
    command.call += name;
}

/// One without notes of its own has those of the one above.
std::string notesOf(const CLI::App& told)
{
    const CLI::App* const above = told.get_parent();
    return above && above->get_footer() == told.get_footer() ? std::string() : told.get_footer();
}

void fill(Command& command, const CLI::App& told)
{
    command.help = told.get_description();
    command.notes = notesOf(told);
    for (const CLI::Option* const option : told.get_options({}))
        if (!option->get_group().empty())
            (option->nonpositional() ? command.options : command.places)
                .push_back(optionOf(*option, command.notes));
    const auto isShown = [](const CLI::App* below) { return !below->get_group().empty(); };
    for (const CLI::App* const below : told.get_subcommands(isShown)) {
        Command next;
        lead(command, below->get_name(), next);
        fill(next, *below);
        command.commands.push_back(std::move(next));
    }
}
} // namespace

namespace Describe {
bool Option::isFile() const
{
    return choices.empty() && (value == "FILE" || value == "PATH" || value == "PICTURE" ||
                               value == "FOLDER" || value == "LIBRARY");
}

bool operator==(const Option& one, const Option& other)
{
    const auto members = [](const Option& option) {
        return std::tie(option.names, option.help, option.value, option.choices, option.isRequired);
    };
    return members(one) == members(other);
}

bool Command::takesFiles() const
{
    return std::any_of(places.begin(), places.end(), [](const Option& place) { return place.isFile(); });
}

Command program()
{
    Command top;
    CommandLine::tell([&top](const CLI::App& app) { fill(top, app); });
    return top;
}

std::vector<const Command*> all(const Command& top)
{
    std::vector<const Command*> found = {&top};
    for (const Command& below : top.commands)
        for (const Command* const command : all(below))
            found.push_back(command);
    return found;
}

std::string joined(const std::vector<std::string>& texts, const char* between)
{
    std::string line;
    for (const std::string& text : texts)
        line += (line.empty() ? "" : between) + text;
    return line;
}

std::string escaped(const std::string& text, const char* characters, const char* escape)
{
    std::string safe;
    for (const char c : text) {
        if (std::string(characters).find(c) != std::string::npos)
            safe += escape;
        safe += c;
    }
    return safe;
}
} // namespace Describe
