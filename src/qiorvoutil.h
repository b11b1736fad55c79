#pragma once

#include <QLocale>
#include <QObject>
#include <QString>

/// The process-wide utility: where the resources lie, which mode is in force, and a few texts and tests that
/// every screen shares. All state is static. Read from any thread; m_cleanMode is written on the GUI thread
/// only, while no worker runs.
class QIOrvoUtil : public QObject
{
public:
    static QIOrvoUtil* Instance();

    /// The directory that holds "/Image", "/pic" and the help pages, without a separator at its end. Fixed by
    /// the first call, which needs an application object.
    static QString getResourcePath();
    /// Oddity 16: the backslash is part of the name; no configuration is read or written.
    static QString getConfigureFile();
    static QString getQMFile();
    static void setLocaleLanguage(QLocale::Language language);
    static void emitLanguageChange();

    /// Oddity 19: takes the last three characters of a file name; "lac" stands for FLAC.
    static bool isMusicFormatorNot(const QString& lastThree);
    static QString intToString(int formatCode);
    /// Oddity 17: a byte count as text, two decimals; the boundaries belong to the smaller unit.
    static QString size2String(unsigned long long bytes);
    /// Whether the file loads as a picture of at least 2 x 2 pixels.
    static bool isImage(const QString& path);

    static QIOrvoUtil* m_singleton;
    /// False: iTunes clean mode. True: local clean mode.
    static bool m_cleanMode;
    static bool m_checkState;

private:
    explicit QIOrvoUtil(QObject* parent = nullptr);

    static QString s_resourcePath;
    static QLocale::Language s_language;
    static bool s_bLanguageChanged;
};
