#include "cli/report.h"

void Tally::addTo(Json& counts) const
{
    counts.number("songs", songs).number("failed", failed);
    if (isOfLibrary)
        counts.number("not_songs", notSongs).number("no_file", withoutFile).number("missing_files", missing);
    else
        counts.number("not_writable", notWritable).number("not_music", notMusic);
}

Tally Tally::with(std::uint64_t failedLater) const
{
    Tally all = *this;
    all.failed += failedLater;
    return all;
}

void Report::failed(const std::string& path, const std::string& reason)
{
    m_console.complain(m_console.shown(path) + ": " + reason);
    if (!isText())
        m_json.failed(path, reason);
}

std::unique_ptr<Report> Report::of(const Order& order, Console& console)
{
    switch (order.command) {
    case Order::Command::Scan:
        return makeScanReport(order, console);
    case Order::Command::Undefined:
        return makeUndefinedReport(order, console);
    case Order::Command::Duplicates:
        return makeDuplicatesReport(order, console);
    case Order::Command::Clean:
        return makeCleanReport(order, console);
    case Order::Command::Identify:
        return makeIdentifyReport(order, console);
    case Order::Command::Check:
        return makeCheckReport(order, console);
    default:
        return makeShowReport(order, console);
    }
}
