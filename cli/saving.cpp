#include "cli/saving.h"

#include "cli/corelog.h"
#include "collection/coretags.h"
#include "collection/saveproblemtext.h"

QString Saving::edit(ChangeStep& step, const std::string& path, const TagTexts& change,
                     ChangeStep::Edited& edited)
{
    CoreLog::takeLast();
    CoreTags tags;
    const QString whyNot = step.edit(path, change, tags, edited);
    const std::string line = CoreLog::takeLast();
    const bool onlyTheLogTells = whyNot == SaveProblemText::of(SAVE_OTHER_PROBLEM) && !line.empty();
    return onlyTheLogTells ? QString::fromStdString(line) : whyNot;
}
