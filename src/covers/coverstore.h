#pragma once

#include "covers/decodequeue.h"

#include "collection/filestate.h"

#include <QByteArray>
#include <QHash>
#include <QImage>
#include <QPixmap>
#include <QString>

#include <deque>
#include <memory>
#include <vector>

/// Writes embedded pictures to files and makes the pixmaps of them that songs carry. Songs whose picture
/// bytes are equal share one pixmap and, where the file system has hard links, one copy on disk. To be called
/// on the GUI thread only; pictures are decoded on other threads.
class CoverStore
{
public:
    /// Writes the bytes to a file of their own at `path`, replacing one that is there, and answers their
    /// picture: at most 300 x 300 pixels, its aspect kept; 96 x 96 once the budget is spent; null when the
    /// bytes are no picture. A failed write is logged and leaves no file; the picture is answered all the
    /// same.
    QPixmap keep(const QByteArray& bytes, const QString& path);
    /// The same without waiting: the picture is put into `cover` at once or by a later handOver() or
    /// finish(), whatever comes first; the last call for one `cover` counts. Until then, or clear(), `cover`
    /// must not go away; the bytes may.
    void keep(const QByteArray& bytes, const QString& path, QPixmap* cover);
    /// Hands over the pictures that were decoded meanwhile; whether none is left.
    bool handOver();
    /// Waits for the pictures that are still being decoded and hands them over.
    void finish();

    /// Forgets what can be shared and what was not handed over, for when no song is left; pixmaps and files
    /// handed out stay.
    void clear();

    /// From this many bytes of distinct pixmaps on, further ones are kept small; 384 MiB unless told
    /// otherwise.
    void setFullSizeBudget(qint64 bytes) { m_fullSizeBudget = bytes; }

private:
    struct Entry
    {
        QString path;
        std::future<QImage> image; ///< valid until the picture has been made of it
        QPixmap picture;
        std::vector<QPixmap*> wanted; ///< who waits for the picture
    };
    using EntryPointer = std::shared_ptr<Entry>;

    EntryPointer entryFor(const QByteArray& bytes, const QString& path);
    void remember(const EntryPointer& entry, const QByteArray& bytes);
    bool isRecent(const EntryPointer& entry) const;
    EntryPointer sameAs(const QByteArray& bytes, quint64 fingerprint) const;
    std::future<QImage> decodeLater(const QByteArray& bytes, const QString& writtenPath);
    void settleOldest();

    /// By a fingerprint of the bytes, which only finds candidates.
    QMultiHash<quint64, EntryPointer> m_entries;
    std::deque<EntryPointer> m_decoding;    ///< oldest first
    QHash<QPixmap*, EntryPointer> m_wanted; ///< the last picture kept for each cover that waits
    EntryPointer m_recent;                  ///< the last picture met,
    FileState m_recentState;                ///< its file as it was then
    QByteArray m_recentBytes;               ///< and its bytes
    qint64 m_pixmapBytes = 0;
    qint64 m_fullSizeBudget = 384ll * 1024 * 1024;
    DecodeQueue m_decoders;
};
