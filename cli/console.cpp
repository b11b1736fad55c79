#include "cli/console.h"

#include "base/text.h"
#include "cli/figures.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

#ifdef _WIN32
#include <io.h>
#else
#include <unistd.h>
#endif

namespace {
constexpr auto betweenSigns = std::chrono::milliseconds(100);
constexpr const char* backToStart = "\r\x1b[K";

bool isTerminal(std::FILE* stream)
{
#ifdef _WIN32
    const bool is = _isatty(_fileno(stream)) != 0;
#else
    const bool is = ::isatty(::fileno(stream)) != 0;
#endif
    const char* const kind = std::getenv("TERM");
    return is && !(kind && std::strcmp(kind, "dumb") == 0);
}

bool wantsColours()
{
    const char* const none = std::getenv("NO_COLOR");
    return !none || !*none;
}

bool isControl(char32_t c)
{
    return c < 0x20 || (c >= 0x7F && c < 0xA0);
}
} // namespace

Console::Console(const Order& order)
    : m_isQuiet(order.isQuiet), m_isTerminal(isTerminal(stdout)),
      m_canAsk(m_isTerminal && isTerminal(stdin) && order.form == Order::Form::Text &&
               order.pathsFrom.empty()),
      m_hasColours(m_isTerminal && wantsColours()), m_hasProgress(!order.isQuiet && isTerminal(stderr))
{
}

Console::~Console()
{
    clearProgress();
}

void Console::write(const std::string& text)
{
    if (m_isTerminal)
        clearProgress();
    std::fwrite(text.data(), 1, text.size(), stdout); // finish() tells whether it went well
}

void Console::say(const std::string& text)
{
    if (!m_isQuiet)
        complain(text);
}

void Console::complain(const std::string& text)
{
    clearProgress();
    std::fflush(stdout); // so that both stand in their order where they go to one place
    std::fprintf(stderr, "melodrift-cli: %s\n", text.c_str());
}

std::string Console::shown(const std::string& text) const
{
    std::string line;
    for (std::size_t at = 0; at < text.size();) {
        const base::Utf8Number read = base::utf8At(text, at);
        if (!read.isCharacter())
            line += m_isTerminal ? "\uFFFD" : text.substr(at, 1);
        else if (isControl(read.number))
            line += '?';
        else
            line += text.substr(at, read.size);
        at += read.isCharacter() ? read.size : 1;
    }
    return line;
}

bool Console::asksFor(const std::string& question)
{
    if (!m_canAsk)
        return false;
    write(question);
    std::fflush(stdout);
    std::string answer;
    for (int c = std::getchar(); c != EOF && c != '\n'; c = std::getchar())
        answer += char(c);
    return answer == "yes";
}

std::string Console::strong(const std::string& text) const
{
    return m_hasColours ? "\x1b[1m" + text + "\x1b[0m" : text;
}

void Console::progress(std::uint64_t done, const std::function<std::uint64_t()>& total)
{
    const Clock::time_point now = Clock::now();
    if (now - m_lastTold < betweenSigns)
        return;
    m_lastTold = now;
    std::fflush(stdout);
    if (!m_hasProgress)
        return;
    std::fprintf(stderr, "%s%s", backToStart, progressLine(done, total()).c_str());
    std::fflush(stderr);
    m_isProgressShown = true;
}

std::string Console::progressLine(std::uint64_t done, std::uint64_t total) const
{
    const double seconds = std::chrono::duration<double>(m_lastTold - m_begun).count();
    const double rate = double(done) / seconds;
    std::string line = Figures::count(done);
    if (total >= done && total > 0)
        line += " of " + Figures::count(total);
    line += " songs, " + (rate < 1 ? Figures::count(std::uint64_t(rate * 60)) + " a minute"
                                   : Figures::count(std::uint64_t(rate)) + " a second");
    if (total >= done && total > 0 && rate > 0)
        line += ", " + Figures::length(std::uint64_t(double(total - done) / rate * 1000)) + " left";
    return line;
}

void Console::clearProgress()
{
    if (!m_isProgressShown)
        return;
    m_isProgressShown = false;
    std::fputs(backToStart, stderr);
    std::fflush(stderr);
}

bool Console::finish()
{
    clearProgress();
    return std::fflush(stdout) == 0 && !std::ferror(stdout);
}
