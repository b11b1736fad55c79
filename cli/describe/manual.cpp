#include "cli/describe/commandtable.h"

#include <algorithm>
#include <map>
#include <sstream>

namespace {
using Describe::Command;
using Describe::Option;

constexpr std::size_t widest = 76;    // of a line, in bytes
constexpr std::size_t commonFrom = 3; // so many commands take an option that is told once

/// Nothing of it is taken for an order to the formatter. All dashes of what is typed stay dashes, and in
/// prose those that begin something.
std::string roff(const std::string& text, bool isTyped)
{
    static const std::map<char, const char*> written = {{'\\', "\\e"},  {'~', "\\(ti"},  {'^', "\\(ha"},
                                                        {'`', "\\(ga"}, {'\'', "\\(aq"}, {'"', "\\(dq"}};
    std::string safe;
    char before = ' ';
    for (const char c : text) {
        const auto found = written.find(c);
        const bool isDash = c == '-' && (isTyped || std::string(" -\"/|").find(before) != std::string::npos);
        if (isDash)
            safe += '\\';
        safe += found == written.end() ? std::string(1, c) : std::string(found->second);
        before = c;
    }
    return safe;
}

/// Each sentence begins a line, and none is long.
std::string prose(const std::string& text)
{
    std::istringstream words(text);
    std::string lines;
    std::string line;
    for (std::string word; words >> word;) {
        const std::string safe = roff(word, false);
        if (!line.empty() && line.size() + 1 + safe.size() > widest) {
            lines += line + '\n';
            line.clear();
        }
        line += (line.empty() ? (safe[0] == '.' ? "\\&" : "") : " ") + safe;
        if (safe.back() == '.') {
            lines += line + '\n';
            line.clear();
        }
    }
    return line.empty() ? lines : lines + line + '\n';
}

/// What is typed as it stands.
std::string bold(const std::string& text)
{
    return "\\fB" + roff(text, true) + "\\fR";
}

std::string boldNames(const std::vector<std::string>& names, const char* between)
{
    std::string line;
    for (const std::string& name : names)
        line += (line.empty() ? "" : between) + bold(name);
    return line;
}

/// A line for each.
std::string boldList(const std::vector<std::string>& texts)
{
    return boldNames(texts, ",\n") + ".\n";
}

std::string nameOf(const Option& option)
{
    std::string name = boldNames(option.names, ", ");
    if (!option.value.empty())
        name += (name.empty() ? "\\fI" : " \\fI") + roff(option.value, true) + "\\fR";
    return name;
}

std::string entry(const Option& option)
{
    std::string help = option.help + '.';
    if (option.isRequired && !option.names.empty())
        help += " It has to be said.";
    const std::string lines = ".TP\n" + nameOf(option) + '\n' + prose(help);
    return option.choices.empty() ? lines : lines + "One of\n" + boldList(option.choices);
}

std::vector<std::vector<std::string>> paragraphs(const std::string& notes)
{
    std::vector<std::vector<std::string>> all(1);
    std::istringstream lines(notes);
    for (std::string line; std::getline(lines, line);) {
        if (!line.empty())
            all.back().push_back(line);
        else if (!all.back().empty())
            all.emplace_back();
    }
    if (all.back().empty())
        all.pop_back();
    return all;
}

bool isList(const std::vector<std::string>& paragraph)
{
    return paragraph.size() > 1 && paragraph.front().back() == ':' && paragraph[1][0] == ' ';
}

/// Lines as they stand, below the one that says what they are.
std::string list(const std::vector<std::string>& paragraph)
{
    std::string lines = ".PP\n" + prose(paragraph.front()) + ".PP\n.RS\n.EX\n";
    for (std::size_t i = 1; i < paragraph.size(); ++i)
        lines += roff(paragraph[i].substr(std::min<std::size_t>(2, paragraph[i].size())), true) + '\n';
    return lines + ".EE\n.RE\n";
}

std::string notesOf(const Command& command)
{
    std::string lines;
    for (const std::vector<std::string>& paragraph : paragraphs(command.notes))
        lines += isList(paragraph) ? list(paragraph) : ".PP\n" + prose(Describe::joined(paragraph, " "));
    return lines;
}

/// "  3    some files failed", of the program's notes.
std::string exitCodes(const Command& top)
{
    std::string lines;
    for (const std::vector<std::string>& paragraph : paragraphs(top.notes))
        for (std::size_t i = 1; i < paragraph.size(); ++i) {
            std::istringstream line(paragraph[i]);
            std::string code;
            std::string meaning;
            line >> code >> std::ws;
            std::getline(line, meaning);
            lines += ".TP\n" + bold(code) + '\n' + prose(meaning + '.');
        }
    return lines;
}

/// Options that many commands take, with the same meaning.
std::vector<Option> commonOptions(const Command& top)
{
    std::vector<Option> seen;
    std::vector<Option> common;
    for (const Command* const command : Describe::all(top))
        for (const Option& option : command->options) {
            seen.push_back(option);
            if (std::size_t(std::count(seen.begin(), seen.end(), option)) == commonFrom)
                common.push_back(option);
        }
    return common;
}

std::string synopsis(const Command& command)
{
    std::string line = bold(command.call) + " [\\fIOPTION\\fR]...";
    for (const Option& place : command.places) {
        const std::string name = "\\fI" + roff(place.value, true) + "\\fR" + (place.isRepeated ? "..." : "");
        line += place.isRequired ? ' ' + name : " [" + name + ']';
    }
    return command.commands.empty() ? line : line + " \\fICOMMAND\\fR";
}

std::string section(const Command& command, const std::vector<Option>& common)
{
    std::string lines = ".SS " + roff(Describe::joined(command.path, " "), true) + '\n' + synopsis(command) +
                        "\n.PP\n" + prose(command.help + '.');
    std::vector<std::string> shared;
    for (const Option& place : command.places)
        lines += entry(place);
    for (const Option& option : command.options) {
        if (std::find(common.begin(), common.end(), option) == common.end())
            lines += entry(option);
        else
            shared.push_back(option.names.back());
    }
    if (!shared.empty())
        lines += ".PP\nAs other commands, it takes\n" + boldList(shared);
    return lines + notesOf(command);
}

void put(std::string& page, const std::string& mark, const std::string& text)
{
    const std::size_t at = page.find(mark + '\n');
    if (at != std::string::npos)
        page.replace(at, mark.size() + 1, text);
}
} // namespace

/// The frame has a line with the name of each part.
std::string Describe::manual(const Command& top, const std::string& frame)
{
    const std::vector<Option> common = commonOptions(top);
    std::string commands;
    for (const Command* const command : all(top))
        if (!command->path.empty())
            commands += section(*command, common);
    std::string own;
    for (const Option& option : top.options)
        if (std::find(common.begin(), common.end(), option) == common.end())
            own += entry(option);
    for (const Option& option : common)
        own += entry(option);
    std::string page = frame;
    put(page, "%OPTIONS%", own);
    put(page, "%COMMANDS%", commands);
    put(page, "%EXIT STATUS%", exitCodes(top));
    return page;
}
