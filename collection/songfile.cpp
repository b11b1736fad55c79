#include "collection/songfile.h"

#include "audiocore/iaudiodecoder.h"
#include "audiocore/iaudiotag.h"
#include "base/failure.h"
#include "base/platform.h"
#include "base/text.h"
#include "collection/tagitems.h"

#include <cstdio>
#include <new>

namespace {
const char* const noMemory = "there is not enough memory";

void takeText(const TagItem& item, SongFile& song)
{
    const QString text = TagItems::textOf(item);
    switch (item.type) {
    case TAG_TITLE:
        song.title = text;
        break;
    case TAG_ARTIST:
        song.artist = text;
        break;
    case TAG_ALBUM:
        song.album = text;
        break;
    case TAG_GENRE:
        song.genre = text;
        break;
    case TAG_YEAR:
        song.year = text.toInt();
        break;
    case TAG_TRACK:
        song.track = text.toInt();
        break;
    default:
        break;
    }
}
} // namespace

SongFile SongFile::failed(const std::string& path, const std::string& reason)
{
    SongFile song;
    song.path = path;
    song.whyNot = reason;
    return song;
}

SongFileReader::SongFileReader() : m_tag(CreateTag()), m_decoder(CreateDecoder()) {}

SongFileReader::~SongFileReader()
{
    if (m_tag)
        ReleaseTag()(m_tag);
    if (m_decoder)
        m_decoder->Close();
    ::operator delete(m_decoder);
}

std::string SongFileReader::whyUnreadable(const std::string& path)
{
    std::FILE* const file = base::openFile(path, false);
    if (!file)
        return base::systemFailure().text;
    base::FileState state;
    const bool isFile = base::stateOf(file, state) && state.regular;
    std::fclose(file);
    return isFile ? "it holds no music that can be read" : "it is no file";
}

SongFile SongFileReader::read(const std::string& path)
{
    try {
        return tryToRead(path);
    } catch (const std::bad_alloc&) {
        return SongFile::failed(path, noMemory);
    }
}

SongFile SongFileReader::tryToRead(const std::string& path)
{
    if (!m_tag || !m_decoder)
        return SongFile::failed(path, noMemory);
    SongFile song;
    song.path = path;
    song.state = FileState::ofEntry(path);
    const std::u32string name = base::nameToUtf32(path);
    if (m_tag->Open(name.c_str()) != 0)
        return SongFile::failed(path, whyUnreadable(path));
    readTag(song);
    m_decoder->Open(name.c_str());
    song.format = m_decoder->GetFormat();
    song.milliseconds = std::uint64_t(m_decoder->GetDuration());
    song.bitRate = std::uint64_t(m_decoder->GetBitrate());
    song.sampleRate = std::uint64_t(m_decoder->GetSampleRate());
    base::FileState state;
    if (base::stateOf(path, state))
        song.bytes = std::uint64_t(state.size);
    return song;
}

void SongFileReader::readTag(SongFile& song)
{
    const int count = m_tag->GetItemCount();
    for (int index = 0; index < count; ++index) {
        const TagItem item = m_tag->GetItem(index);
        if (item.size <= 0 || !item.data)
            continue;
        if (item.dataKind == 0)
            takeText(item, song);
        else
            song.coverBytes = std::uint64_t(item.size);
    }
}
