#include "tags/parsedmedia.h"

#include "base/log.h"
#include "base/platform.h"
#include "base/text.h"
#include "media/checkedstream.h"
#include "media/soundlimits.h"
#include "tags/tagfields.h"

#include <algorithm>
#include <utility>

using audiocore::MpegStream;
using audiocore::ParsedMedia;

namespace {
struct LastReading
{
    std::string path;
    base::FileState state;
    std::shared_ptr<const ParsedMedia> media;
};

/// Each thread's own: of several that read side by side none takes another's away. A plain pointer, which is
/// there for calls from exit handlers, too, when what ends with the thread has ended.
thread_local LastReading* threadsReading = nullptr;

struct EndOfThread
{
    bool isAwaited = false;
    ~EndOfThread() { delete std::exchange(threadsReading, nullptr); }
};
thread_local EndOfThread endOfThread;

LastReading& lastReading()
{
    if (!threadsReading) {
        endOfThread.isAwaited = true;
        threadsReading = new LastReading;
    }
    return *threadsReading;
}

void addItems(ParsedMedia& parsed)
{
    for (int type = 0; type < audiocore::textTypes; ++type) {
        const std::string& text = parsed.content.texts[size_t(type)];
        if (!text.empty())
            parsed.items.push_back({TagItemType(type), base::toUtf32(text), TagLib::ByteVector()});
    }
    if (!parsed.content.picture.isEmpty())
        parsed.items.push_back({TAG_PICTURE, std::u32string(), parsed.content.picture});
}

/// The tag library counts in numbers that a file can make overflow.
MpegStream atLeastZero(MpegStream properties)
{
    properties.milliseconds = std::max<std::int64_t>(properties.milliseconds, 0);
    properties.bitsPerSecond = std::max<std::int64_t>(properties.bitsPerSecond, 0);
    return properties;
}

/// Fills in what the file holds; false when it holds no music.
bool readInto(ParsedMedia& parsed, audiocore::CheckedStream& stream)
{
    const audiocore::MediaFile media = audiocore::openMedia(stream);
    const MpegStream properties = media.file ? media.file->sound() : MpegStream();
    if (!audiocore::isSampleRate(properties.sampleRate))
        return false;
    parsed.format = media.format;
    parsed.demuxer = media.demuxer;
    parsed.properties = atLeastZero(properties);
    parsed.audioBegin = media.audioBegin;
    parsed.content = audiocore::readTags(media);
    parsed.largestPicture = media.file->largestPicture();
    addItems(parsed);
    return true;
}

std::shared_ptr<const ParsedMedia> parse(audiocore::CheckedStream& stream, const std::string& path)
{
    auto parsed = std::make_shared<ParsedMedia>();
    std::string error;
    try {
        error = audiocore::readMedia(stream, *parsed);
    } catch (const audiocore::EndlessReading& reason) {
        error = reason.what();
    }
    if (error.empty())
        return parsed;
    base::logLine(path, error);
    return std::make_shared<ParsedMedia>();
}
} // namespace

std::string audiocore::readMedia(CheckedStream& stream, ParsedMedia& parsed)
{
    if (!stream.isOpen())
        return "cannot be read: " + stream.openError();
    const bool music = readInto(parsed, stream);
    if (stream.ranDry())
        throw EndlessReading();
    if (stream.readFailed())
        return "cannot be read to its end";
    return music ? std::string() : "holds no music that can be read";
}

std::shared_ptr<const ParsedMedia> audiocore::parsedMedia(const std::string& path)
{
    base::FileState state;
    base::stateOf(path, state);
    LastReading& last = lastReading();
    // A file that is still not there has the same empty state as before.
    if (last.media && last.path == path && last.state == state)
        return last.media;
    CheckedStream stream(path, CheckedStream::Mode::Read);
    std::shared_ptr<const ParsedMedia> media = parse(stream, path);
    last.path = path;
    last.state = state;
    last.media = media;
    return media;
}

std::shared_ptr<const ParsedMedia> audiocore::parsedMedia(base::FileBytes& file, const std::string& path)
{
    CheckedStream stream(file, path, CheckedStream::Mode::Read);
    return parse(stream, path);
}
