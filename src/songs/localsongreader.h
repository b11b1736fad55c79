#pragma once

#include "covers/coverstore.h"

#include <QString>
#include <QStringList>

#include <array>
#include <memory>

class IAudioDecoder;
class IAudioTag;
struct QMusicInfo;
struct TagItem;

/// Oddity 23: number of the next temporary cover file, from 50 on; never used twice in a run.
extern quint64 musicNum;

/// Turns music files into songs: tag items, cover and stream properties through the audio core. Serves one
/// intake after another; GUI thread only, since it makes pixmaps.
class LocalSongReader
{
public:
    struct Song
    {
        std::unique_ptr<QMusicInfo> info;
        IAudioTag* tag = nullptr;         ///< left open; null when the library could make none
        IAudioDecoder* decoder = nullptr; ///< closed; null when the library could make none
        QString reason;                   ///< why the file could not be read; empty when it was
    };

    /// Starts a new intake: empties the list of added paths and the first-text table.
    void begin();
    /// A file that cannot be read becomes a song with empty texts and zero properties. Covers are decoded on
    /// other threads: the song shows the generic one until handOver() or finish() brings its own, and stays
    /// alive until then, or until forgetCovers().
    Song read(const QString& path);
    /// Gives songs the covers decoded so far; whether none is left.
    bool handOver() { return m_covers.handOver(); }
    /// Waits until every song has its cover.
    void finish() { m_covers.finish(); }
    /// Forgets the covers that songs share or still wait for; before the songs go away.
    void forgetCovers() { m_covers.clear(); }

    /// Oddity 22: every path of this intake, the first text met of each tag type, every cover file written.
    const QStringList& addedPaths() const { return m_addedPathList; }

    /// "WAV", "MP3" …; every code without a name of its own is "MP3".
    static QString formatName(int formatCode);
    /// The folder of temporary cover files: "localImage" glued to the temporary path.
    static QString coverFolder();

private:
    void readTag(IAudioTag& tag, QMusicInfo& song);
    void takeText(const TagItem& item, QMusicInfo& song);
    void takePicture(const TagItem& item, QMusicInfo& song);
    static void readProperties(IAudioDecoder& decoder, const std::u32string& path, QMusicInfo& song);

    static constexpr int tagTypes = 11;

    QStringList m_addedPathList;
    std::array<QString, tagTypes> m_firstTexts;
    QString m_coverFolder; ///< made for this intake; empty before its first picture
    CoverStore m_covers;
};
