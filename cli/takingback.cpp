#include "cli/takingback.h"

#include "cli/exitcode.h"
#include "cli/figures.h"
#include "cli/interruption.h"
#include "cli/jsonoutput.h"
#include "collection/coretags.h"
#include "collection/history.h"

#include <QDateTime>

namespace {
const char* nameOf(FileChange::Kind kind)
{
    return kind == FileChange::Kind::Trashed   ? "trashed"
           : kind == FileChange::Kind::Deleted ? "deleted"
           : kind == FileChange::Kind::Edited  ? "edited"
                                               : "taken-out";
}

void write(const StepReturn::Result& result, const Order& order, Console& console)
{
    JsonOutput json(order.form, console);
    const bool isText = order.form == Order::Form::Text;
    if (!isText)
        json.begin("undo", "songs");
    for (const std::string& path : result.paths) {
        Json song;
        if (!isText)
            json.item("song", song.path("path", path));
        else if (order.isVerbose)
            console.writeLine(console.shown(path) + ": as it was");
    }
    for (const StepReturn::Told& told : result.failed) {
        console.complain(console.shown(told.path) + ": " + told.reason.toStdString());
        if (!isText)
            json.failed(told.path, told.reason.toStdString());
    }
    if (isText) {
        console.say("step " + std::to_string(result.step) + ": " +
                    Figures::count(result.paths.size(), "file", "files") + " as before");
        return;
    }
    Json counts;
    counts.number("step", std::uint64_t(result.step)).number("songs", result.paths.size());
    json.end(counts.number("failed", result.failed.size()), !result.isWhole);
}

Json jsonOf(const HistoryStep& step)
{
    Json json;
    json.number("step", std::uint64_t(step.number));
    json.text("time", QDateTime::fromSecsSinceEpoch(step.time, Qt::UTC).toString(Qt::ISODate));
    json.path("what", step.what).flag("ended", step.isEnded);
    std::vector<std::string> changes;
    for (const auto& [number, change] : step.changes) {
        Json one;
        one.path("path", change.path)
            .text("kind", std::string(nameOf(change.kind)))
            .flag("back", change.isBack);
        if (change.kind == FileChange::Kind::TakenOut)
            one.number("tracks", std::uint64_t(change.tracks));
        changes.push_back(one.object());
    }
    return json.value("changes", Json::list(changes));
}

void writeText(const HistoryStep& step, const Order& order, Console& console)
{
    const QString time =
        QDateTime::fromSecsSinceEpoch(step.time).toString(QStringLiteral("yyyy-MM-dd HH:mm:ss"));
    std::string files = Figures::count(step.changes.size(), "file", "files");
    const auto left = std::uint64_t(step.changesLeft());
    if (left < step.changes.size())
        files += left == 0 ? ", taken back" : ", " + Figures::count(left) + " not taken back";
    console.writeLine(console.strong(QString::number(step.number).rightJustified(4).toStdString()) + "  " +
                      time.toStdString() + "  " + console.shown(step.what) + "  (" + files + ")");
    if (!order.isVerbose)
        return;
    for (const auto& [number, change] : step.changes)
        console.writeLine("      " +
                          QString::fromLatin1(nameOf(change.kind)).leftJustified(11).toStdString() +
                          console.shown(change.path) + (change.isBack ? " (taken back)" : ""));
}
} // namespace

int TakingBack::undo(const Order& order, Console& console)
{
    CoreTags tags;
    const StepReturn::Result result =
        History(History::usersFolder()).takeBack(order.step, tags, [&console](int done, int total) {
            console.progress(std::uint64_t(done), [total] { return std::uint64_t(total); });
            return !Interruption::hasCome();
        });
    if (result.step == 0) {
        console.complain(result.reason.toStdString());
        return ExitCode::failed;
    }
    write(result, order, console);
    if (!console.finish())
        return ExitCode::failed;
    if (!result.isWhole && Interruption::hasCome())
        return ExitCode::ended;
    return result.failed.empty() ? ExitCode::done : ExitCode::failed;
}

int TakingBack::history(const Order& order, Console& console)
{
    QString whyNot;
    const std::map<int, HistoryStep> steps = History(History::usersFolder()).steps(whyNot);
    if (!whyNot.isEmpty()) {
        console.complain(whyNot.toStdString());
        return ExitCode::failed;
    }
    JsonOutput json(order.form, console);
    const bool isText = order.form == Order::Form::Text;
    if (!isText)
        json.begin("history", "steps");
    for (const auto& [number, step] : steps) {
        if (isText)
            writeText(step, order, console);
        else
            json.item("step", jsonOf(step));
    }
    Json counts;
    if (isText && steps.empty())
        console.say("nothing was changed");
    if (!isText)
        json.end(counts.number("steps", steps.size()), false);
    return console.finish() ? ExitCode::done : ExitCode::failed;
}
