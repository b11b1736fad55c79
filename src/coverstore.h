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
    /// Writes the bytes to a file of their own at `path`, replacing one that is there, and answers their
    /// picture: at most 300 x 300 pixels, its aspect kept; 96 x 96 once the budget is spent; null when the
    /// bytes are no picture. A failed write is logged and leaves no file; the picture is answered all the
    /// same.
    QPixmap keep(const QByteArray& bytes, const QString& path);
    /// Forgets what can be shared, for when no song is left; pixmaps and files handed out stay.
    void clear();

    /// From this many bytes of distinct pixmaps on, further ones are kept small; 384 MiB unless told
    /// otherwise.
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
