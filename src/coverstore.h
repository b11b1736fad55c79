#pragma once

#include <QByteArray>
#include <QHash>
#include <QPixmap>
#include <QString>

/// Writes embedded pictures to files and makes the pixmaps of them that songs carry. Songs whose picture
/// bytes are equal share one pixmap and, where the file system has hard links, one copy on disk. GUI thread
/// only.
class CoverStore
{
public:
    /// Writes the bytes to a new file at `path` and answers their picture, at most 300 x 300 (its aspect
    /// kept); null when the bytes are no picture. A failed write is logged and leaves no file.
    QPixmap keep(const QByteArray& bytes, const QString& path);
    /// Forgets what can be shared; pixmaps and files handed out stay.
    void clear();

    /// From this many bytes of distinct pixmaps on, further ones are kept small.
    void setFullSizeBudget(qint64 bytes) { m_fullSizeBudget = bytes; }

private:
    struct Entry
    {
        QString path;
        QPixmap picture;
    };

    const Entry* sameAs(const QByteArray& bytes, quint64 fingerprint) const;

    QMultiHash<quint64, Entry> m_entries; ///< by a fingerprint of the bytes, which only finds candidates
    qint64 m_pixmapBytes = 0;
    qint64 m_fullSizeBudget = 384ll * 1024 * 1024;
};
