#include "coverstore.h"

#include "coverloader.h"

#include <QBuffer>
#include <QFile>
#include <QThread>

#include <cstring>
#include <filesystem>
#include <functional>
#include <string_view>

namespace {
constexpr int fullEdge = 300;
constexpr int smallEdge = 96;
constexpr int sample = 4096;
constexpr size_t maxDecoding = 64; // with their bytes in memory

/// A number that equal bytes share and different pictures hardly ever do. Takes the length and a few samples:
/// the bytes of candidates are compared in full anyway.
quint64 fingerprintOf(const QByteArray& bytes)
{
    const std::string_view all(bytes.constData(), size_t(bytes.size()));
    const std::hash<std::string_view> hash;
    quint64 fingerprint = all.size();
    for (const size_t start : {size_t(0), all.size() / 2, all.size() - qMin(all.size(), size_t(sample))})
        fingerprint = fingerprint * 0x9e3779b97f4a7c15u + hash(all.substr(start, sample));
    return fingerprint;
}

bool fileHolds(const QString& path, const QByteArray& bytes)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Unbuffered) || file.size() != bytes.size())
        return false;
    if (bytes.isEmpty())
        return true;
    const uchar* content = file.map(0, file.size());
    return content && std::memcmp(content, bytes.constData(), size_t(bytes.size())) == 0;
}

/// Makes a new file: one that is there may be a link that other songs' covers share.
bool writeFile(const QString& path, const QByteArray& bytes)
{
    QFile::remove(path);
    QFile file(path);
    if (file.open(QIODevice::WriteOnly | QIODevice::NewOnly | QIODevice::Unbuffered) &&
        file.write(bytes) == bytes.size())
        return true;
    qWarning("the cover file %s cannot be written: %s", qUtf8Printable(path),
             qUtf8Printable(file.errorString()));
    file.remove();
    return false;
}

bool linkFile(const QString& existing, const QString& path)
{
    const auto native = [](const QString& name) { return std::filesystem::path(name.toStdU16String()); };
    std::error_code failure;
    std::filesystem::create_hard_link(native(existing), native(path), failure);
    return !failure;
}
} // namespace

CoverStore::CoverStore()
{
    // One thread is left for whoever reads the files.
    m_decoders.setMaxThreadCount(qMax(1, QThread::idealThreadCount() - 1));
}

CoverStore::~CoverStore()
{
    m_decoders.clear();
}

QPixmap CoverStore::keep(const QByteArray& bytes, const QString& path)
{
    const EntryPointer entry = entryFor(bytes, path);
    while (entry->image.valid())
        settleOldest();
    return entry->picture;
}

void CoverStore::keep(const QByteArray& bytes, const QString& path, QPixmap* cover)
{
    const EntryPointer entry = entryFor(bytes, path);
    if (entry->image.valid()) {
        m_wanted.insert(cover, entry);
    } else {
        m_wanted.remove(cover);
        *cover = entry->picture;
    }
}

void CoverStore::finish()
{
    while (!m_decoding.empty())
        settleOldest();
    for (auto wanted = m_wanted.cbegin(); wanted != m_wanted.cend(); ++wanted)
        *wanted.key() = wanted.value()->picture;
    m_wanted.clear();
}

void CoverStore::clear()
{
    m_decoders.clear();
    m_wanted.clear();
    m_decoding.clear();
    m_entries.clear();
    m_pixmapBytes = 0;
}

/// The entry that the bytes share, or a new one; the file at the path is written or linked.
CoverStore::EntryPointer CoverStore::entryFor(const QByteArray& bytes, const QString& path)
{
    const quint64 fingerprint = fingerprintOf(bytes);
    if (EntryPointer same = sameAs(bytes, fingerprint)) {
        if (same->path != path && !linkFile(same->path, path))
            writeFile(path, bytes);
        return same;
    }
    auto entry = std::make_shared<Entry>();
    entry->path = path;
    if (writeFile(path, bytes))
        m_entries.insert(fingerprint, entry);
    entry->image = decodeLater(bytes);
    m_decoding.push_back(entry);
    if (m_decoding.size() > maxDecoding)
        settleOldest();
    return entry;
}

CoverStore::EntryPointer CoverStore::sameAs(const QByteArray& bytes, quint64 fingerprint) const
{
    for (auto entry = m_entries.constFind(fingerprint);
         entry != m_entries.cend() && entry.key() == fingerprint; ++entry)
        if (fileHolds((*entry)->path, bytes))
            return *entry;
    return nullptr;
}

std::future<QImage> CoverStore::decodeLater(const QByteArray& bytes)
{
    // Those under way are counted as if they were as large as they can get.
    const qint64 expected = m_pixmapBytes + qint64(m_decoding.size()) * fullEdge * fullEdge * 4;
    const int edge = expected < m_fullSizeBudget ? fullEdge : smallEdge;
    // The bytes may be somebody's memory that ends with this call.
    const QByteArray own(bytes.constData(), bytes.size());
    const auto task = std::make_shared<std::packaged_task<QImage()>>([own, edge] {
        QBuffer buffer;
        buffer.setData(own);
        buffer.open(QIODevice::ReadOnly);
        return CoverLoader::decode(&buffer, edge);
    });
    m_decoders.start([task] { (*task)(); });
    return task->get_future();
}

void CoverStore::settleOldest()
{
    const EntryPointer entry = m_decoding.front();
    m_decoding.pop_front();
    entry->picture = QPixmap::fromImage(entry->image.get());
    m_pixmapBytes += qint64(entry->picture.width()) * entry->picture.height() * entry->picture.depth() / 8;
}
