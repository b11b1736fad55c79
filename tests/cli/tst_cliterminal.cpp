// The program on a terminal: colours, and the question before files go.
#include "clirun.h"

#include <cstdlib>
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {
/// A run of the program on a terminal of its own.
class TerminalRun
{
public:
    TerminalRun(const CliRun& files, const QStringList& arguments, const QByteArray& noColours = QByteArray())
        : m_terminal(::posix_openpt(O_RDWR | O_NOCTTY))
    {
        if (m_terminal < 0 || ::grantpt(m_terminal) != 0 || ::unlockpt(m_terminal) != 0)
            qFatal("there is no terminal to be had");
        const QByteArray name = ::ptsname(m_terminal);
        m_child = ::fork();
        if (m_child == 0)
            become(name, files, arguments, noColours);
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

private:
    [[noreturn]] static void become(const QByteArray& terminal, const CliRun& files,
                                    const QStringList& arguments, const QByteArray& noColours)
    {
        ::setsid();
        const int fd = ::open(terminal.constData(), O_RDWR);
        for (const int standard : {0, 1, 2})
            ::dup2(fd, standard);
        qputenv("HOME", QFile::encodeName(files.path("home")));
        qputenv("TERM", "xterm");
        qputenv("NO_COLOR", noColours);
        qunsetenv("XDG_STATE_HOME");
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

    const int m_terminal;
    pid_t m_child;
};
} // namespace

class TestCliTerminal : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void headingsAreBoldWhereColoursAreLiked();
    void whatIsNoTextIsShownAsSuch();
    void aTypedYesDoesIt();
    void anotherAnswerDoesNothing();
    void aListOnTheInputIsNoAnswer();

private:
    std::unique_ptr<CliRun> m_run;
};

void TestCliTerminal::init()
{
    m_run = std::make_unique<CliRun>();
    m_run->addSong("a.mp3", CliRun::texts("Halo"));
    m_run->addSong("b.mp3", CliRun::texts("Halo"));
}

void TestCliTerminal::headingsAreBoldWhereColoursAreLiked()
{
    TerminalRun bold(*m_run, {"duplicates", "."});
    QVERIFY(bold.readTo().contains("\x1b[1mHalo (2)\x1b[0m\r\n"));
    QCOMPARE(bold.code(), 0);
    TerminalRun plain(*m_run, {"duplicates", "."}, "1");
    const QByteArray text = plain.readTo();
    QVERIFY2(text.contains("Halo (2)\r\n") && !text.contains("\x1b[1m"), text);
}

void TestCliTerminal::whatIsNoTextIsShownAsSuch()
{
    const QByteArray odd = QFile::encodeName(m_run->path()) + "/odd\xFF\x1b.mp3";
    QCOMPARE(std::rename(QFile::encodeName(m_run->path("b.mp3")).constData(), odd.constData()), 0);
    TerminalRun run(*m_run, {"duplicates", "."});
    const QByteArray text = run.readTo();
    QCOMPARE(std::remove(odd.constData()), 0);
    QVERIFY2(text.contains("./odd\xEF\xBF\xBD?.mp3\r\n"), text);
}

void TestCliTerminal::aTypedYesDoesIt()
{
    TerminalRun run(*m_run, {"clean", "--keep", "first", "."});
    QVERIFY(run.readTo("1 file go: ").contains("1 file for the trash"));
    QVERIFY(QFile::exists(m_run->path("b.mp3")));
    run.type("yes\n");
    const QByteArray rest = run.readTo();
    QVERIFY2(rest.contains("1 file moved into the trash"), rest);
    QCOMPARE(run.code(), 0);
    QVERIFY(!QFile::exists(m_run->path("b.mp3")));
}

void TestCliTerminal::anotherAnswerDoesNothing()
{
    for (const char* answer : {"y\n", "\n", "yes please\n"}) {
        TerminalRun run(*m_run, {"clean", "--keep", "first", "."});
        run.readTo("go: ");
        run.type(answer);
        QVERIFY(run.readTo().contains("nothing was done"));
        QCOMPARE(run.code(), 0);
        QVERIFY(QFile::exists(m_run->path("b.mp3")));
    }
}

void TestCliTerminal::aListOnTheInputIsNoAnswer()
{
    TerminalRun run(*m_run, {"clean", "--keep", "first", "--files-from", "-"});
    run.type("a.mp3\nb.mp3\nyes\n\x04");
    QVERIFY(run.readTo().contains("nothing was done"));
    QVERIFY(QFile::exists(m_run->path("b.mp3")));
}

QTEST_GUILESS_MAIN(TestCliTerminal)
#include "tst_cliterminal.moc"
