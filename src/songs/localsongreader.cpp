#include "songs/localsongreader.h"

#include "audiocore/iaudiodecoder.h"
#include "audiocore/iaudiotag.h"
#include "collection/formats.h"
#include "collection/songfile.h"
#include "collection/tagitems.h"
#include "qmusicinfo.h"

#include <QDir>
#include <QFile>

quint64 musicNum = 50;

QString LocalSongReader::formatName(int formatCode)
{
    return Formats::listedName(formatCode);
}

QString LocalSongReader::coverFolder()
{
    // Oddity 23: no separator in between, the name is glued to the temporary path.
    return QDir::tempPath() + QLatin1String("localImage");
}

void LocalSongReader::begin()
{
    m_addedPathList.clear();
    m_firstTexts.fill(QString());
    m_coverFolder.clear();
}

LocalSongReader::Song LocalSongReader::read(const QString& path)
{
    Song song;
    song.info = std::make_unique<QMusicInfo>();
    song.info->localInfo = std::make_unique<LocalMusicInfo>();
    song.info->localInfo->filePath = path;
    song.info->localInfo->file = FileState::ofEntry(path);
    m_addedPathList.append(path);

    const std::u32string widePath = path.toStdU32String();
    song.tag = CreateTag();
    if (song.tag) {
        if (song.tag->Open(widePath.c_str()) != 0)
            song.reason = QString::fromStdString(SongFileReader::whyUnreadable(path.toStdString()));
        readTag(*song.tag, *song.info);
    }
    song.decoder = CreateDecoder();
    if (song.decoder)
        readProperties(*song.decoder, widePath, *song.info);
    return song;
}

void LocalSongReader::readTag(IAudioTag& tag, QMusicInfo& song)
{
    const int count = tag.GetItemCount();
    for (int index = 0; index < count; ++index) {
        const TagItem item = tag.GetItem(index);
        if (item.size <= 0 || !item.data)
            continue;
        if (item.dataKind == 0)
            takeText(item, song);
        else
            takePicture(item, song); // whatever its type says
    }
}

void LocalSongReader::takeText(const TagItem& item, QMusicInfo& song)
{
    const QString text = TagItems::textOf(item);
    if (item.type >= 0 && item.type < tagTypes && m_firstTexts[item.type].isEmpty()) {
        m_firstTexts[item.type] = text;
        m_addedPathList.append(text);
    }
    LocalMusicInfo& local = *song.localInfo;
    switch (item.type) {
    case TAG_TITLE:
        local.title = text;
        break;
    case TAG_ARTIST:
        local.artist = text;
        break;
    case TAG_ALBUM:
        local.album = text;
        break;
    case TAG_GENRE:
        local.genre = text;
        break;
    case TAG_YEAR:
        local.year = text.toInt();
        break;
    case TAG_TRACK:
        local.trackNumber = text.toInt();
        break;
    default:
        break;
    }
}

void LocalSongReader::takePicture(const TagItem& item, QMusicInfo& song)
{
    if (m_coverFolder.isEmpty()) {
        m_coverFolder = coverFolder();
        QDir().mkpath(m_coverFolder);
    }
    QString path;
    do // covers that identifications found lie there, too
        path = m_coverFolder + QLatin1String("/tempstr") + QString::number(musicNum++);
    while (QFile::exists(path));
    const QByteArray bytes = QByteArray::fromRawData(static_cast<const char*>(item.data), item.size);
    m_addedPathList.append(path);
    song.localInfo->coverPath = path;
    m_covers.keep(bytes, path, song.localInfo->cover.get());
}

void LocalSongReader::readProperties(IAudioDecoder& decoder, const std::u32string& path, QMusicInfo& song)
{
    LocalMusicInfo& local = *song.localInfo;
    decoder.Open(path.c_str());
    local.format = formatName(decoder.GetFormat());
    local.sampleRate = decoder.GetSampleRate();
    local.bitrate = decoder.GetBitrate();
    local.duration = decoder.GetDuration();
    decoder.Close();
}
