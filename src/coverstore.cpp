#include "coverstore.h"

#include "coverloader.h"

#include <QBuffer>
#include <QFile>

#include <cstring>
#include <filesystem>
#include <functional>
#include <string_view>

namespace {
constexpr int fullEdge = 300;
constexpr int smallEdge = 96;
constexpr int sample = 4096;

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
    const quint64 fingerprint = fingerprintOf(bytes);
    if (const Entry* same = sameAs(bytes, fingerprint)) {
        if (same->path != path && !linkFile(same->path, path))
            writeFile(path, bytes);
        return same->picture;
    }
    const bool written = writeFile(path, bytes);
    QBuffer buffer;
    buffer.setData(bytes);
    buffer.open(QIODevice::ReadOnly);
    const int edge = m_pixmapBytes < m_fullSizeBudget ? fullEdge : smallEdge;
    const QPixmap picture = QPixmap::fromImage(CoverLoader::decode(&buffer, edge));
    m_pixmapBytes += qint64(picture.width()) * picture.height() * picture.depth() / 8;
    if (written)
        m_entries.insert(fingerprint, {path, picture});
    return picture;
}

void CoverStore::clear()
{
    m_entries.clear();
    m_pixmapBytes = 0;
}

const CoverStore::Entry* CoverStore::sameAs(const QByteArray& bytes, quint64 fingerprint) const
{
    for (auto entry = m_entries.constFind(fingerprint);
         entry != m_entries.cend() && entry.key() == fingerprint; ++entry)
        if (fileHolds(entry->path, bytes))
            return &entry.value();
    return nullptr;
}
