#pragma once

#include "clirun.h"

#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

/// A run of melodrift-cli on a terminal of its own.
class TerminalRun
{
public:
    struct Surroundings
    {
        QByteArray noColours = QByteArray();
        QByteArray kindOfTerminal = "xterm";
        int elsewhere = -1; ///< the standard stream that goes into a file
    };

    TerminalRun(const CliRun& files, const QStringList& arguments, const Surroundings& surroundings)
        : m_elsewhere(files.path("elsewhere")), m_terminal(::posix_openpt(O_RDWR | O_NOCTTY))
    {
        if (m_terminal < 0 || ::grantpt(m_terminal) != 0 || ::unlockpt(m_terminal) != 0)
            qFatal("there is no terminal to be had");
        const QByteArray name = ::ptsname(m_terminal);
        m_child = ::fork();
        if (m_child == 0)
            become(name, files, arguments, surroundings);
    }
    TerminalRun(const CliRun& files, const QStringList& arguments)
        : TerminalRun(files, arguments, Surroundings())
    {
    }
    ~TerminalRun()
    {
        ::close(m_terminal);
        if (m_child > 0) {
            ::kill(m_child, SIGKILL);
            ::waitpid(m_child, nullptr, 0);
        }
    }
    Q_DISABLE_COPY(TerminalRun)

    /// Reads up to a text, or to the end without one.
    QByteArray readTo(const QByteArray& end = QByteArray())
    {
        char byte = 0;
        QByteArray text;
        while ((end.isEmpty() || !text.endsWith(end)) && ::read(m_terminal, &byte, 1) == 1)
            text += byte;
        return text;
    }
    /// Reads to the end, so slowly that the program waits for its reader and takes a while.
    QByteArray readSlowly()
    {
        constexpr int pause = 10;
        constexpr int atOnce = 2048;
        char part[atOnce];
        QByteArray text;
        int untilPause = atOnce;
        for (ssize_t size = 0; (size = ::read(m_terminal, part, sizeof part)) > 0;) {
            text.append(part, int(size));
            untilPause -= int(size);
            if (untilPause > 0)
                continue;
            ::poll(nullptr, 0, pause);
            untilPause = atOnce;
        }
        return text;
    }
    /// What comes within some milliseconds.
    QByteArray readFor(int milliseconds)
    {
        QByteArray text;
        struct pollfd terminal = {m_terminal, POLLIN, 0};
        char byte = 0;
        while (::poll(&terminal, 1, milliseconds) > 0 && ::read(m_terminal, &byte, 1) == 1)
            text += byte;
        return text;
    }
    void type(const QByteArray& text)
    {
        QCOMPARE(::write(m_terminal, text.constData(), size_t(text.size())), text.size());
    }
    int code()
    {
        int status = 0;
        ::waitpid(std::exchange(m_child, -1), &status, 0);
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }
    /// What went into the file, once all was read.
    QByteArray elsewhere() const
    {
        QFile file(m_elsewhere);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

private:
    [[noreturn]] void become(const QByteArray& terminal, const CliRun& files, const QStringList& arguments,
                             const Surroundings& surroundings) const
    {
        ::setsid();
        const int fd = ::open(terminal.constData(), O_RDWR);
        for (const int standard : {0, 1, 2})
            ::dup2(fd, standard);
        if (surroundings.elsewhere >= 0)
            ::dup2(::open(QFile::encodeName(m_elsewhere).constData(), O_WRONLY | O_CREAT, 0600),
                   surroundings.elsewhere);
        qputenv("HOME", QFile::encodeName(files.path("home")));
        qputenv("TERM", surroundings.kindOfTerminal);
        qputenv("NO_COLOR", surroundings.noColours);
        qunsetenv("XDG_STATE_HOME");
        qunsetenv("XDG_CACHE_HOME");
        qunsetenv("XDG_DATA_HOME");
        const QByteArray program = QFile::encodeName(CliRun::program());
        QList<QByteArray> words{program};
        for (const QString& argument : arguments)
            words.append(QFile::encodeName(argument));
        std::vector<char*> argv;
        for (QByteArray& word : words)
            argv.push_back(word.data());
        argv.push_back(nullptr);
        if (::chdir(QFile::encodeName(files.path()).constData()) == 0)
            ::execv(program.constData(), argv.data());
        ::_exit(127);
    }

    const QString m_elsewhere;
    const int m_terminal;
    pid_t m_child;
};
