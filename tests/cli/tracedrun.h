#pragma once

#include "clirun.h"

#include <csignal>
#include <fcntl.h>
#include <sys/ptrace.h>
#include <sys/wait.h>
#include <unistd.h>

/// A run of melodrift-cli that stops at each call of the system that its first thread makes, which is the one
/// that changes files: so it can be ended at any of them, however busy the machine is.
class TracedRun
{
public:
    struct Ending
    {
        int code;   ///< -1 when a signal ended it
        int signal; ///< 0 when it ended by itself
    };

    TracedRun(const CliRun& files, const QStringList& arguments)
        : m_words(wordsOf(arguments)), m_environment(environmentOf(files)),
          m_folder(QFile::encodeName(files.path()))
    {
        m_process = ::fork();
        if (m_process == 0)
            become();
        waitForStop();
    }
    ~TracedRun()
    {
        if (m_isThere)
            end(SIGKILL);
    }
    Q_DISABLE_COPY(TracedRun)

    /// Whether it could be traced, which some containers forbid.
    bool isTraced() const { return m_isThere || m_ending.code != untraced; }
    /// Goes on to its next call, or from there back into the program; false once it has ended.
    bool step()
    {
        if (!m_isThere)
            return false;
        ::ptrace(PTRACE_SYSCALL, m_process, nullptr, toPointer(m_signal));
        waitForStop();
        return m_isThere;
    }
    /// So many of those; false where it ended before.
    bool step(int times)
    {
        for (int i = 0; i < times; ++i)
            if (!step())
                return false;
        return m_isThere;
    }
    /// Ends it by a signal, or has it end as it likes.
    Ending end(int signal)
    {
        if (m_isThere) {
            ::kill(m_process, signal);
            ::ptrace(PTRACE_DETACH, m_process, nullptr, nullptr);
            int status = 0;
            ::waitpid(m_process, &status, 0);
            noteEnd(status);
        }
        return m_ending;
    }
    Ending ending() const { return m_ending; }

private:
    static constexpr int untraced = 126;
    using Words = QList<QByteArray>;

    static void* toPointer(int number) { return reinterpret_cast<void*>(std::intptr_t(number)); }
    static Words wordsOf(const QStringList& arguments)
    {
        Words words{QFile::encodeName(CliRun::program())};
        for (const QString& argument : arguments)
            words.append(QFile::encodeName(argument));
        return words;
    }
    static Words environmentOf(const CliRun& files)
    {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        for (const char* folder : {"XDG_STATE_HOME", "XDG_CACHE_HOME", "XDG_DATA_HOME"})
            environment.remove(folder);
        environment.insert("HOME", files.path("home"));
        environment.insert("TMPDIR", files.path("tmp"));
        // The leak checker traces as well, and there is room for one.
        environment.insert("ASAN_OPTIONS", environment.value("ASAN_OPTIONS") + ":detect_leaks=0");
        Words words;
        for (const QString& line : environment.toStringList())
            words.append(line.toLocal8Bit());
        return words;
    }
    static std::vector<char*> pointersTo(Words& words)
    {
        std::vector<char*> pointers;
        for (QByteArray& word : words)
            pointers.push_back(word.data());
        pointers.push_back(nullptr);
        return pointers;
    }

    [[noreturn]] void become()
    {
        const std::vector<char*> words = pointersTo(m_words);
        const std::vector<char*> environment = pointersTo(m_environment);
        const int silence = ::open("/dev/null", O_RDWR | O_CLOEXEC);
        for (const int standard : {0, 1, 2})
            ::dup2(silence, standard);
        if (::ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) != 0)
            ::_exit(untraced);
        if (::chdir(m_folder.constData()) == 0)
            ::execve(words.front(), words.data(), environment.data());
        ::_exit(127);
    }
    void waitForStop()
    {
        int status = 0;
        m_isThere = ::waitpid(m_process, &status, 0) == m_process && WIFSTOPPED(status);
        m_signal = 0;
        if (!m_isThere)
            noteEnd(status);
        else if (WSTOPSIG(status) != SIGTRAP) // which stands for a call
            m_signal = WSTOPSIG(status);
    }
    void noteEnd(int status)
    {
        m_isThere = false;
        m_ending = {WIFEXITED(status) ? WEXITSTATUS(status) : -1, WIFSIGNALED(status) ? WTERMSIG(status) : 0};
    }

    Words m_words;
    Words m_environment;
    const QByteArray m_folder;
    pid_t m_process = -1;
    bool m_isThere = false;
    int m_signal = 0; ///< that came to it, and that it has not got yet
    Ending m_ending = {-1, 0};
};
