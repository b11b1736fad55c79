#include "cli/commandline.h"
#include "cli/console.h"
#include "cli/corelog.h"
#include "cli/editing.h"
#include "cli/interruption.h"
#include "cli/libraryreading.h"
#include "cli/reading.h"
#include "cli/takingback.h"

#include <cstdio>
#include <new>

namespace {
int obey(const Order& order)
{
    CoreLog::hold(order.isVerbose);
    Interruption::hold();
    Console console(order);
    switch (order.command) {
    case Order::Command::Tag:
        return Editing::tag(order, console);
    case Order::Command::Cover:
        return Editing::saveCover(order, console);
    case Order::Command::Undo:
        return TakingBack::undo(order, console);
    case Order::Command::History:
        return TakingBack::history(order, console);
    default:
        return order.library.empty() ? Reading::run(order, console) : LibraryReading::run(order, console);
    }
}
} // namespace

int main(int argc, char* argv[])
{
    try {
        int exitCode = 0;
        const std::optional<Order> order = CommandLine::read(argc, argv, exitCode);
        return order ? obey(*order) : exitCode;
    } catch (const std::bad_alloc&) {
        std::fputs("melodrift-cli: there is not enough memory\n", stderr);
        return 3;
    }
}
