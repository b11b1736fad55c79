#include "coverstore.h"

#include "coverloader.h"

#include <QBuffer>
#include <QFile>

#include <cstring>
#include <filesystem>
#include <string_view>

namespace {
constexpr int fullEdge = 300;
constexpr int smallEdge = 96;

quint64 fingerprintOf(const QByteArray& bytes)
{
    return std::hash<std::string_view>()(std::string_view(bytes.constData(), size_t(bytes.size())));
}

bool fileHolds(const QString& path, const QByteArray& bytes)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly) || file.size() != bytes.size())
        return false;
    const uchar* content = file.map(0, file.size());
    return content && std::memcmp(content, bytes.constData(), size_t(bytes.size())) == 0;
}

bool writeFile(const QString& path, const QByteArray& bytes)
{
    QFile file(path);
    if (file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size() && file.flush())
        return true;
    qWarning("the cover file %s cannot be written: %s", qUtf8Printable(path),
             qUtf8Printable(file.errorString()));
    file.remove();
    return false;
}

bool linkFile(const QString& existing, const QString& path)
{
    std::error_code failure;
    std::filesystem::create_hard_link(QFile::encodeName(existing).constData(),
                                      QFile::encodeName(path).constData(), failure);
    return !failure;
}
} // namespace

QPixmap CoverStore::keep(const QByteArray& bytes, const QString& path)
{
    const quint64 fingerprint = fingerprintOf(bytes);
    if (const Entry* same = sameAs(bytes, fingerprint)) {
        if (!linkFile(same->path, path))
            writeFile(path, bytes);
        return same->picture;
    }
    const bool written = writeFile(path, bytes);
    QByteArray content = bytes;
    QBuffer buffer(&content);
    buffer.open(QIODevice::ReadOnly);
    const int edge = m_pixmapBytes < m_fullSizeBudget ? fullEdge : smallEdge;
    const QPixmap picture = QPixmap::fromImage(CoverLoader::decode(&buffer, edge));
    m_pixmapBytes += 4ll * picture.width() * picture.height();
    if (written)
        m_entries.insert(fingerprint, {path, picture});
    return picture;
}

const CoverStore::Entry* CoverStore::sameAs(const QByteArray& bytes, quint64 fingerprint) const
{
    for (auto entry = m_entries.constFind(fingerprint);
         entry != m_entries.cend() && entry.key() == fingerprint; ++entry)
        if (fileHolds(entry->path, bytes))
            return &entry.value();
    return nullptr;
}

void CoverStore::clear()
{
    m_entries.clear();
    m_pixmapBytes = 0;
}
