#include "qiorvoutil.h"

#include "collection/formats.h"
#include "common/skinplace.h"
#include "covers/coverloader.h"

#include <QCoreApplication>
#include <QTranslator>

namespace {
QTranslator s_translator;
}

QString QIOrvoUtil::s_resourcePath = QLatin1String("");
bool QIOrvoUtil::m_cleanMode = false;
bool QIOrvoUtil::m_checkState = false;
QLocale::Language QIOrvoUtil::s_language = static_cast<QLocale::Language>(42);
bool QIOrvoUtil::s_bLanguageChanged = false;
QIOrvoUtil* QIOrvoUtil::m_singleton = QIOrvoUtil::Instance();

namespace {
[[maybe_unused]] QIOrvoUtil* autoRelease = QIOrvoUtil::m_singleton;
}

QIOrvoUtil::QIOrvoUtil(QObject* parent) : QObject(parent) {}

QIOrvoUtil* QIOrvoUtil::Instance()
{
    if (!m_singleton)
        m_singleton = new QIOrvoUtil;
    return m_singleton;
}

QString QIOrvoUtil::getResourcePath()
{
    static const bool filled = (s_resourcePath = SkinPlace::folder(), true);
    Q_UNUSED(filled);
    return s_resourcePath;
}

QString QIOrvoUtil::getConfigureFile()
{
    return QCoreApplication::applicationDirPath() + QLatin1String("\\configure.dat");
}

QString QIOrvoUtil::getQMFile()
{
    return QString();
}

void QIOrvoUtil::setLocaleLanguage(QLocale::Language) {}

void QIOrvoUtil::emitLanguageChange() {}

bool QIOrvoUtil::isMusicFormatorNot(const QString& lastThree)
{
    return Formats::isMusicEnding(lastThree);
}

QString QIOrvoUtil::intToString(int formatCode)
{
    return Formats::nameOf(formatCode);
}

QString QIOrvoUtil::size2String(unsigned long long bytes)
{
    constexpr double step = 1.0 / 1024;
    const double count = static_cast<double>(bytes);
    if (bytes > 1073741824)
        return QString::asprintf("%.2fGB", count * step * step * step);
    if (bytes > 1048576)
        return QString::asprintf("%.2fMB", count * step * step);
    if (bytes > 1024)
        return QString::asprintf("%.2fKB", count * step);
    return QString::asprintf("%.2fB", count);
}

bool QIOrvoUtil::isImage(const QString& path)
{
    const QSize size = CoverLoader::pictureSize(path);
    return size.width() >= 2 && size.height() >= 2;
}
