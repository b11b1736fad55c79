#pragma once

#include <string>
#include <vector>

/// What can be called, and how, as manual and completions tell it: from the very table that reads command
/// lines.
namespace Describe {
struct Option
{
    std::vector<std::string> names;   ///< with their dashes; none for what stands at a place
    std::string help;                 ///< one line
    std::string value;                ///< what it is called; empty for a flag
    std::vector<std::string> choices; ///< all that the value may be; none where it may be anything
    bool isRequired = false;
    bool isRepeated = false;

    /// A path, which shells complete by themselves.
    bool isFile() const;
};
bool operator==(const Option& one, const Option& other);

struct Command
{
    std::vector<std::string> path; ///< the words that lead there; none for the program itself
    std::string call;              ///< those, and what stands between them: "library FILE scan"
    std::string help;
    std::string notes; ///< paragraphs with lines of their own, and indented lists below a line with a colon
    std::vector<Option> options;
    std::vector<Option> places;
    std::vector<Command> commands;

    std::string name() const { return path.empty() ? std::string() : path.back(); }
    bool takesFiles() const;
};

/// The program.
Command program();
/// It and all below, each before those below it.
std::vector<const Command*> all(const Command& top);

std::string joined(const std::vector<std::string>& texts, const char* between);
/// With each of the characters escaped by what is put in front.
std::string escaped(const std::string& text, const char* characters, const char* escape);

std::string manual(const Command& top, const std::string& frame);
std::string bashCompletion(const Command& top);
std::string zshCompletion(const Command& top);
std::string fishCompletion(const Command& top);
} // namespace Describe
