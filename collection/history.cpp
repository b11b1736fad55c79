#include "collection/history.h"

#include "base/failure.h"
#include "base/userfolder.h"
#include "collection/filestate.h"
#include "collection/stepreturn.h"

namespace {
using Steps = std::map<int, HistoryStep>;

QString unwritable(const base::Failure& failure)
{
    return QStringLiteral("the history cannot be written: %1").arg(QString::fromStdString(failure.text));
}

/// Null, with the reason, where there is none.
HistoryStep* stepToTakeBack(Steps& steps, std::optional<int> number, QString& reason)
{
    if (!number) {
        for (auto step = steps.rbegin(); step != steps.rend(); ++step)
            if (!step->second.wasTried && step->second.changesLeft() > 0)
                return &step->second;
        reason = QStringLiteral("there is nothing to take back");
        return nullptr;
    }
    const auto found = steps.find(*number);
    if (found == steps.end() || found->second.changes.empty())
        reason = QStringLiteral("there is no step %1").arg(*number);
    else if (found->second.changesLeft() == 0)
        reason = QStringLiteral("step %1 was taken back already").arg(*number);
    return reason.isEmpty() ? &found->second : nullptr;
}
} // namespace

std::string History::usersFolder()
{
    const std::string state = base::userFolder("XDG_STATE_HOME", "/.local/state");
    return state.empty() ? state : state + "/melodrift";
}

History::History(const std::string& folder) : History(folder, Limits()) {}

std::unique_ptr<HistoryJournal> History::open(QString& reason) const
{
    base::Failure failure = {"there is no folder for it"};
    std::unique_ptr<HistoryJournal> journal =
        m_folder.empty() ? nullptr
                         : HistoryJournal::open(m_folder, m_limits.journalBytes, m_limits.patience, failure);
    if (!journal)
        reason = failure.kind == base::Failure::Kind::InUse ? QString::fromStdString(failure.text)
                                                            : unwritable(failure);
    return journal;
}

std::unique_ptr<ChangeStep> History::begin(const std::string& what, QString& reason) const
{
    std::unique_ptr<HistoryJournal> journal = open(reason);
    return journal ? std::make_unique<ChangeStep>(std::move(journal), covers(), what) : nullptr;
}

Steps History::steps(QString& reason) const
{
    HistorySteps history;
    base::Failure failure;
    const auto take = [&history](std::string_view line) { history.take(line); };
    if (!HistoryJournal::read(m_folder, take, failure)) {
        reason = QStringLiteral("the history cannot be read: %1").arg(QString::fromStdString(failure.text));
        return {};
    }
    Steps steps = std::move(history.all());
    for (auto step = steps.begin(); step != steps.end();)
        step = step->second.changes.empty() ? steps.erase(step) : std::next(step);
    return steps;
}

StepReturn::Result History::takeBack(std::optional<int> number, TagFiles& tags,
                                     const StepReturn::Progress& progress) const
{
    StepReturn::Result result;
    const std::unique_ptr<HistoryJournal> journal = open(result.reason);
    if (!journal)
        return result;
    HistorySteps history;
    journal->read([&history](std::string_view line) { history.take(line); });
    HistoryStep* const step = stepToTakeBack(history.all(), number, result.reason);
    if (step)
        result = StepReturn(*journal, history, covers(), tags).takeBack(*step, progress);
    return result;
}
