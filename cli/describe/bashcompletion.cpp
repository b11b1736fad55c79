#include "cli/describe/commandtable.h"

namespace {
using Describe::Command;
using Describe::Option;

const char* const bashHead = R"(# Completion of melodrift-cli for bash.
_melodrift_cli()
{
    local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]} command= words= files= i
    if [[ $word == = ]]; then # --option=
        word=
    elif [[ $before == = ]]; then
        before=${COMP_WORDS[COMP_CWORD - 2]}
    fi
    for ((i = 1; i < COMP_CWORD; ++i)); do
        case "$command ${COMP_WORDS[i]}" in
)";
const char* const bashMiddle = R"(        esac
    done
    case "$command $before" in
)";
const char* const bashWords = R"(    *)
        case "$command,$word" in
)";
const char* const bashTail = R"(        esac
        ;;
    esac
    # Where nothing of it goes on: files and folders, as the shell completes them by itself.
    compopt -o default ${files:+-o filenames} 2>/dev/null
    COMPREPLY=()
    [[ ! $words ]] || mapfile -t COMPREPLY < <(compgen $files -W "$words" -- "$word")
} && complete -F _melodrift_cli melodrift-cli
)";

/// As the script has it while it is there: a blank and a word for each.
std::string spaced(const Command& command)
{
    return (command.path.empty() ? "" : " ") + Describe::joined(command.path, " ");
}

/// What may follow: the names of options, or what stands at a place.
std::string bashWordsOf(const Command& command)
{
    std::vector<std::string> options;
    for (const Option& option : command.options)
        options.insert(options.end(), option.names.begin(), option.names.end());
    std::vector<std::string> others;
    others.reserve(command.commands.size());
    for (const Command& below : command.commands)
        others.push_back(below.name());
    for (const Option& place : command.places)
        others.insert(others.end(), place.choices.begin(), place.choices.end());
    std::string lines =
        "        \"" + spaced(command) + ",-\"*) words='" + Describe::joined(options, " ") + "' ;;\n";
    if (!others.empty())
        lines += "        \"" + spaced(command) + ",\"*) words='" + Describe::joined(others, " ") + '\'' +
                 (command.takesFiles() ? " files=-f" : "") + " ;;\n";
    return lines;
}

std::string bashValuesOf(const Command& command)
{
    std::string lines;
    for (const Option& option : command.options) {
        if (option.value.empty() || option.names.empty())
            continue;
        std::vector<std::string> cases;
        cases.reserve(option.names.size());
        for (const std::string& name : option.names)
            cases.push_back('"' + spaced(command) + ' ' + name + '"');
        const std::string words =
            option.choices.empty() ? "" : " words='" + Describe::joined(option.choices, " ") + "'";
        lines += "    " + Describe::joined(cases, " | ") + ')' + words + " ;;\n";
    }
    return lines;
}
} // namespace

std::string Describe::bashCompletion(const Command& top)
{
    std::string script = bashHead;
    for (const Command* const command : all(top))
        if (!command->path.empty())
            script += "        \"" + spaced(*command) + "\") command='" + spaced(*command) + "' ;;\n";
    script += bashMiddle;
    for (const Command* const command : all(top))
        script += bashValuesOf(*command);
    script += bashWords;
    for (const Command* const command : all(top))
        script += bashWordsOf(*command);
    return script + bashTail;
}
