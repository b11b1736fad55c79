#pragma once

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>

/// A run of a program with a temporary folder, a home and a music library of its own, all empty at first.
class ProgramRun
{
public:
    ProgramRun() : m_environment(QProcessEnvironment::systemEnvironment())
    {
        for (const char* folder : {"tmp", "home"})
            QDir(m_folder.path()).mkdir(folder);
        set("TMPDIR", temporary());
        set("HOME", m_folder.filePath("home"));
        unset("XDG_DATA_HOME"); // its trash is at home
        set("XDG_RUNTIME_DIR", m_folder.path());
        set("MELODRIFT_ITUNES_LIBRARY", m_folder.filePath("Library.xml"));
        process.setWorkingDirectory(m_folder.path());
    }
    ~ProgramRun()
    {
        process.kill();
        process.waitForFinished();
    }
    Q_DISABLE_COPY(ProgramRun)

    void set(const QString& name, const QString& value) { m_environment.insert(name, value); }
    void unset(const QString& name) { m_environment.remove(name); }

    QString path(const QString& name) const { return m_folder.filePath(name); }
    QString temporary() const { return path("tmp"); }
    /// The names in the temporary folder, without that of a file which the thread sanitizer has there while
    /// it starts.
    QStringList left() const
    {
        const QStringList all =
            QDir(temporary())
                .entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
        QStringList ours;
        for (const QString& name : all)
            if (!name.startsWith(QLatin1String("tsan.rodata.")))
                ours.append(name);
        return ours;
    }

    void start(const QString& program, const QStringList& arguments = {})
    {
        startBeside(process, program, arguments);
    }
    /// Another one that finds the same.
    void startBeside(QProcess& other, const QString& program, const QStringList& arguments) const
    {
        other.setProcessEnvironment(m_environment);
        other.start(program, arguments);
    }
    /// The built program, which lies beside the tests.
    void startMelodrift(const QStringList& arguments = {})
    {
        start(QStandardPaths::findExecutable("melodrift", {QCoreApplication::applicationDirPath()}),
              arguments);
    }

    QProcess process;

private:
    QTemporaryDir m_folder;
    QProcessEnvironment m_environment;
};
