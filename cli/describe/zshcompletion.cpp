#include "cli/describe/commandtable.h"

namespace {
using Describe::Command;
using Describe::Option;

std::string zshFunction(const Command& command)
{
    std::string name = "_melodrift-cli";
    for (const std::string& word : command.path)
        name += '_' + word;
    return name;
}

/// Within single quotes, and within what stands for one argument.
std::string zshQuoted(const std::string& text)
{
    std::string quoted;
    for (const char c : Describe::escaped(text, "\\:[]", "\\"))
        quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return quoted;
}

std::string zshValue(const Option& option)
{
    const std::string files = option.isFile() ? "_files" : " ";
    return ':' + option.value + ':' +
           (option.choices.empty() ? files : '(' + zshQuoted(Describe::joined(option.choices, " ")) + ')');
}

std::string zshSpec(const Option& option, const std::string& name)
{
    const bool ends = option.names.back() == "--help" || option.names.back() == "--version";
    std::string others = '(' + Describe::joined(option.names, " ") + ')';
    if (ends)
        others = "(- *)";
    else if (option.isRepeated)
        others = "*";
    const std::string glued = option.value.empty() ? "" : name[1] == '-' ? "=" : "+";
    return "        '" + others + name + glued + '[' + zshQuoted(option.help) + ']' +
           (option.value.empty() ? "" : zshValue(option)) + "' \\\n";
}

std::string zshPlaces(const Command& command)
{
    std::string lines;
    std::size_t number = 0;
    for (const Option& place : command.places) {
        const std::string position = place.isRepeated ? "*" : std::to_string(++number);
        lines += "        '" + position + zshValue(place) + "' \\\n";
    }
    if (!command.commands.empty())
        lines += "        '" + std::to_string(++number) + ":command:->command' '*::argument:->argument' \\\n";
    return lines;
}

/// Which of those below it is, and what that one takes.
std::string zshBelow(const Command& command)
{
    std::string names;
    std::string cases;
    for (const Command& below : command.commands) {
        names += "            '" + zshQuoted(below.name()) + ':' + zshQuoted(below.help) + "'\n";
        cases += "        " + below.name() + ") " + zshFunction(below) + " ;;\n";
    }
    std::size_t number = 1;
    for (const Option& place : command.places)
        number += place.isRepeated ? 0 : 1;
    return "    case $state in\n    command)\n        local -a commands=(\n" + names +
           "        )\n        _describe command commands\n        ;;\n    argument)\n        case $line[" +
           std::to_string(number) + "] in\n" + cases + "        esac\n        ;;\n    esac\n";
}

std::string zshFunctionOf(const Command& command)
{
    std::string lines = zshFunction(command) + "()\n{\n";
    if (!command.commands.empty())
        lines += "    local curcontext=$curcontext state\n    local -a line\n";
    lines += command.commands.empty() ? "    _arguments -s \\\n" : "    _arguments -C \\\n";
    for (const Option& option : command.options)
        for (const std::string& name : option.names)
            lines += zshSpec(option, name);
    lines += zshPlaces(command);
    lines += "        && return\n";
    if (!command.commands.empty())
        lines += zshBelow(command);
    return lines + "}\n\n";
}
} // namespace

std::string Describe::zshCompletion(const Command& top)
{
    std::string script = "#compdef melodrift-cli\n# Completion of melodrift-cli for zsh.\n";
    for (const Command* const command : all(top))
        script += zshFunctionOf(*command);
    return script + "_melodrift-cli \"$@\"\n";
}
