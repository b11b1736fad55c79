#include "cli/describe/commandtable.h"

namespace {
using Describe::Command;
using Describe::Option;

const char* const fishHead = R"(# Completion of melodrift-cli for fish.
function __melodrift_cli_is_at -d 'Whether the words so far lead to this command'
    set -l at
    for word in (commandline -opc)[2..-1]
        switch "$at $word"
            case )";
const char* const fishTail = R"(
                set at "$at $word"
        end
    end
    test "$at" = "$argv[1]"
end
)";

std::string fishQuoted(const std::string& text)
{
    return '\'' + Describe::escaped(text, "\\'", "\\") + '\'';
}

std::string fishPath(const Command& command)
{
    return (command.path.empty() ? "" : " ") + Describe::joined(command.path, " ");
}

std::string fishBegin(const Command& command)
{
    return "complete -c melodrift-cli -n \"__melodrift_cli_is_at '" + fishPath(command) + "'\"";
}

std::string fishValue(const Option& option)
{
    if (option.value.empty())
        return std::string();
    if (option.isFile())
        return " -r -F";
    return " -x" + (option.choices.empty() ? "" : " -a " + fishQuoted(Describe::joined(option.choices, " ")));
}

std::string fishLinesOf(const Command& command)
{
    std::string lines = '\n' + (command.takesFiles() ? std::string() : fishBegin(command) + " -f\n");
    for (const Command& below : command.commands)
        lines += fishBegin(command) + " -a " + below.name() + " -d " + fishQuoted(below.help) + '\n';
    for (const Option& place : command.places)
        if (!place.choices.empty())
            lines += fishBegin(command) + " -a " + fishQuoted(Describe::joined(place.choices, " ")) + '\n';
    for (const Option& option : command.options) {
        lines += fishBegin(command);
        for (const std::string& name : option.names)
            lines += name[1] == '-' ? " -l " + name.substr(2) : " -s " + name.substr(1);
        lines += fishValue(option) + " -d " + fishQuoted(option.help) + '\n';
    }
    return lines;
}
} // namespace

std::string Describe::fishCompletion(const Command& top)
{
    std::vector<std::string> paths;
    for (const Command* const command : all(top))
        if (!command->path.empty())
            paths.push_back(fishQuoted(fishPath(*command)));
    std::string script = fishHead + joined(paths, " ") + fishTail;
    for (const Command* const command : all(top))
        script += fishLinesOf(*command);
    return script;
}
