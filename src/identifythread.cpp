#include "identifythread.h"

#include "audiocore/iaudioidentifier.h"
#include "common/workers.h"
#include "songs/localsongreader.h"

#include <QDir>
#include <QFile>

#include <atomic>

namespace {
constexpr int itemCount = 10;

/// Oddity 23: number of the next cover file; never used twice in a run.
std::atomic<quint64> coverNumber{10000};

bool isFound(int status)
{
    return status == IDENTIFY_FOUND || status == IDENTIFY_FOUND_BY_TAGS;
}

bool isText(const TagItem& item)
{
    return item.type >= TAG_TITLE && item.type <= TAG_TRACK;
}

void writeNew(const QString& path, const TagItem& item)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::NewOnly) ||
        file.write(static_cast<const char*>(item.data), item.size) != item.size)
        qWarning("the cover file %s cannot be written: %s", qUtf8Printable(path),
                 qUtf8Printable(file.errorString()));
}
} // namespace

IdentifyThread::IdentifyThread(QObject* parent) : QThread(parent) {}

IdentifyThread::~IdentifyThread()
{
    CloseTheIdentifier();
    wait();
    DestroyIdentifier(m_pIdentifier);
}

void IdentifyThread::CloseTheIdentifier()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_bCancelled = true;
    if (m_pIdentifier)
        m_pIdentifier->Cancel();
}

bool IdentifyThread::isCancelled() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_bCancelled;
}

int IdentifyThread::status() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_nStatus;
}

bool IdentifyThread::hasKey() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_bHasKey;
}

void IdentifyThread::noteEnd(int status, bool hasKey)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_nStatus = status;
    m_bHasKey = hasKey;
}

/// Makes the identifier and opens the file; false when there is nothing to run.
bool IdentifyThread::prepare()
{
    // Before the lock, for which the window may wait: the first one is loaded from the disk.
    IAudioIdentifier* const identifier = m_pIdentifier ? m_pIdentifier : CreateIdentifier();
    if (!identifier)
        qWarning("there is nothing to identify %s with", qUtf8Printable(m_strFilePath));
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_pIdentifier = identifier;
    if (!m_pIdentifier || m_bCancelled)
        return false;
    m_pIdentifier->Open(m_strFilePath.toStdU32String().c_str());
    return true;
}

void IdentifyThread::run()
{
    if (!Workers::finish("identifying a song", [this] { identify(); }))
        emit emitFailToIdentify();
}

void IdentifyThread::identify()
{
    if (!prepare()) {
        emit emitFailToIdentify();
        return;
    }
    m_pIdentifier->Identify(1, 1, 3);
    noteEnd(m_pIdentifier->GetStatus(), IdentifiesBySound());
    if (!isFound(status())) {
        m_pIdentifier->Close();
        emit emitFailToIdentify();
        return;
    }
    emit emitReturnIdentifyInfo(takeItems());
}

QStringList IdentifyThread::takeItems()
{
    QStringList info;
    for (int index = 0; index < itemCount; ++index) {
        const TagItem item = m_pIdentifier->GetItem(index);
        if (item.size <= 0)
            continue;
        if (isText(item))
            info.append(QString::number(item.type) +
                        QString::fromUcs4(static_cast<const char32_t*>(item.data), item.size / 4));
        else if (item.type == TAG_PICTURE)
            takeCover(item);
    }
    return info;
}

void IdentifyThread::takeCover(const TagItem& item)
{
    const QString folder = LocalSongReader::coverFolder();
    QDir().mkpath(folder);
    QString path;
    do // covers of songs lie there, too, and their numbers may have come this far
        path = folder + QLatin1String("/tempstr") + QString::number(coverNumber++);
    while (QFile::exists(path));
    writeNew(path, item);
    emit emitReturnIdentifyCover(path);
}
