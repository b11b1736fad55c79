#pragma once

#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QtTest>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

/// A home whose disk does not answer, as a share does whose server is gone: who looks for the user's music
/// folder waits there. Nothing else names a library meanwhile.
class SlowDisk
{
public:
    /// In an empty folder.
    explicit SlowDisk(const QString& home)
        : m_settings(QFile::encodeName(home + "/.config/user-dirs.dirs")), m_home(qgetenv("HOME")),
          m_configuration(qgetenv("XDG_CONFIG_HOME")), m_library(qgetenv("MELODRIFT_ITUNES_LIBRARY"))
    {
        QDir(home).mkpath(".config");
        ::mkfifo(m_settings.constData(), 0600);
        m_end = ::open(m_settings.constData(), O_RDWR | O_CLOEXEC);
        qputenv("HOME", QFile::encodeName(home));
        qunsetenv("XDG_CONFIG_HOME");
        qunsetenv("MELODRIFT_ITUNES_LIBRARY");
    }
    ~SlowDisk()
    {
        answer();
        restore("HOME", m_home);
        restore("XDG_CONFIG_HOME", m_configuration);
        restore("MELODRIFT_ITUNES_LIBRARY", m_library);
    }
    SlowDisk(const SlowDisk&) = delete;
    SlowDisk& operator=(const SlowDisk&) = delete;

    /// From now on it does, to those who wait as well.
    void answer()
    {
        if (m_end < 0)
            return;
        ::unlink(m_settings.constData());
        ::close(m_end);
        m_end = -1;
    }

private:
    static void restore(const char* name, const QByteArray& value)
    {
        if (value.isNull())
            qunsetenv(name);
        else
            qputenv(name, value);
    }

    const QByteArray m_settings;
    const QByteArray m_home;
    const QByteArray m_configuration;
    const QByteArray m_library;
    int m_end = -1;
};
