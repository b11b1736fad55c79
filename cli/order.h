#pragma once

#include "collection/folderwalk.h"
#include "collection/keeprule.h"
#include "collection/namepattern.h"
#include "collection/songlist.h"
#include "collection/tagfiles.h"

#include <optional>
#include <set>
#include <string>
#include <vector>

/// What a command line asks for.
struct Order
{
    enum class Command {
        None,
        Scan,
        Undefined,
        Duplicates,
        Clean,
        Show,
        Identify,
        Cover,
        Tag,
        Undo,
        History,
        Check
    };
    enum class Form { Text, Json, Lines };

    Command command = Command::None;
    std::string library;            ///< the file of a music library that the command is about; empty for none
    std::vector<std::string> paths; ///< the bytes of the command line
    std::string pathsFrom;          ///< a file with further paths, "-" for standard input; empty for none
    bool pathsEndWithZero = false;  ///< in that file; else each is a line
    FolderWalk::Rules rules;
    Form form = Form::Text;
    bool isQuiet = false;
    bool isVerbose = false;
    std::set<std::string> failOn; ///< of what there is to be found
    SongList::By by = SongList::By::TitleAndDuration;
    std::string coverFile; ///< where a cover goes, "-" for standard output
    bool replaces = false; ///< what is there
    TagTexts edit;
    NamePattern fromName;
    QVector<KeepRule> keep;
    bool writes = false;         ///< what was identified
    bool onlyMissing = false;    ///< of that what a song has not
    bool isAgreed = false;       ///< what a plan says is done without asking
    bool deletesForGood = false; ///< instead of moving into the trash
    std::optional<int> step;     ///< of the history
    std::string words;           ///< of the call, for the history
};
