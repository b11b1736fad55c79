#include "cli/report.h"

void Tally::addTo(Json& counts) const
{
    counts.number("songs", songs).number("failed", failed);
    counts.number("not_writable", notWritable).number("not_music", notMusic);
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
    default:
        return makeShowReport(order, console);
    }
}
