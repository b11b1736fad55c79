#include "covers/coverstore.h"

#include "covers/coverloader.h"

#include <QBuffer>
#include <QFile>

#include <chrono>
#include <cstring>
#include <filesystem>
#include <functional>
#include <string_view>

namespace {
constexpr int fullEdge = CoverLoader::songEdge;
constexpr int smallEdge = 96;
constexpr int sample = 4096;
constexpr int maxRecentBytes = 4 * 1024 * 1024;

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
        entry->wanted.push_back(cover);
        m_wanted.insert(cover, entry);
    } else {
        m_wanted.remove(cover);
        *cover = entry->picture;
    }
}

bool CoverStore::handOver()
{
    const auto isReady = [](const Entry& entry) {
        return entry.image.wait_for(std::chrono::seconds(0)) == std::future_status::ready;
    };
    while (!m_decoding.empty() && isReady(*m_decoding.front()))
        settleOldest();
    return m_decoding.empty();
}

void CoverStore::finish()
{
    while (!m_decoding.empty())
        settleOldest();
}

void CoverStore::clear()
{
    m_decoders.drop();
    m_decoding.clear();
    m_wanted.clear();
    m_entries.clear();
    m_recent.reset();
    m_recentBytes.clear();
    m_pixmapBytes = 0;
}

/// The entry that the bytes share, or a new one; the file at the path is written or linked.
CoverStore::EntryPointer CoverStore::entryFor(const QByteArray& bytes, const QString& path)
{
    const quint64 fingerprint = fingerprintOf(bytes);
    if (EntryPointer same = sameAs(bytes, fingerprint)) {
        remember(same, bytes);
        if (same->path != path && !linkFile(same->path, path))
            writeFile(path, bytes);
        return same;
    }
    auto entry = std::make_shared<Entry>();
    entry->path = path;
    const bool written = writeFile(path, bytes);
    if (written) {
        m_entries.insert(fingerprint, entry);
        remember(entry, bytes);
    }
    entry->image = decodeLater(bytes, written ? path : QString());
    m_decoding.push_back(entry);
    return entry;
}

/// Songs of one album follow one another: the bytes of the last picture save reading its file back.
void CoverStore::remember(const EntryPointer& entry, const QByteArray& bytes)
{
    if (isRecent(entry) || bytes.size() > maxRecentBytes)
        return;
    m_recent = entry;
    m_recentState = FileState::of(entry->path);
    m_recentBytes = QByteArray(bytes.constData(), bytes.size());
}

/// Whether the bytes in memory are still those of the entry's file.
bool CoverStore::isRecent(const EntryPointer& entry) const
{
    return entry == m_recent && FileState::of(entry->path) == m_recentState;
}

CoverStore::EntryPointer CoverStore::sameAs(const QByteArray& bytes, quint64 fingerprint) const
{
    for (auto entry = m_entries.constFind(fingerprint);
         entry != m_entries.cend() && entry.key() == fingerprint; ++entry)
        if (isRecent(*entry) ? bytes == m_recentBytes : fileHolds((*entry)->path, bytes))
            return *entry;
    return nullptr;
}

/// Decodes the written file, so that any number of pictures can wait without their bytes; the bytes only
/// where there is no file.
std::future<QImage> CoverStore::decodeLater(const QByteArray& bytes, const QString& writtenPath)
{
    // Those under way are counted as if they were as large as they can get.
    const qint64 expected = m_pixmapBytes + qint64(m_decoding.size()) * fullEdge * fullEdge * 4;
    const int edge = expected < m_fullSizeBudget ? fullEdge : smallEdge;
    if (!writtenPath.isEmpty())
        return m_decoders.add([writtenPath, edge] {
            QFile file(writtenPath);
            return file.open(QIODevice::ReadOnly) ? CoverLoader::decode(&file, edge) : QImage();
        });
    const QByteArray own(bytes.constData(), bytes.size()); // the caller's memory may end with this call
    return m_decoders.add([own, edge] {
        QBuffer buffer;
        buffer.setData(own);
        buffer.open(QIODevice::ReadOnly);
        return CoverLoader::decode(&buffer, edge);
    });
}

void CoverStore::settleOldest()
{
    const EntryPointer entry = m_decoding.front();
    m_decoding.pop_front();
    entry->picture = QPixmap::fromImage(entry->image.get());
    for (QPixmap* cover : std::exchange(entry->wanted, {}))
        if (m_wanted.value(cover) == entry) {
            *cover = entry->picture;
            m_wanted.remove(cover);
        }
    m_pixmapBytes += qint64(entry->picture.width()) * entry->picture.height() * entry->picture.depth() / 8;
}
