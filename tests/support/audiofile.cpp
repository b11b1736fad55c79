#include "audiofile.h"

#include "audiocore/iaudiodecoder.h"
#include "audiocore/iaudiotag.h"
#include "audiocore/log.h"

#include <QStringList>

#include <mutex>
#include <new>

namespace {
std::mutex linesMutex; // work in the background tells, too
QStringList lines;

struct LogCatcher
{
    LogCatcher()
    {
        SetAudioCoreLogSink([](const char* line) {
            const std::lock_guard<std::mutex> lock(linesMutex);
            lines.append(QString::fromUtf8(line));
        });
    }
} catcher;

TagItem textItem(int type, const std::u32string& text)
{
    return {-1, type, 0, int(text.size() * sizeof(char32_t)), const_cast<char32_t*>(text.c_str())};
}
} // namespace

AudioFile::Content AudioFile::read(const QString& path)
{
    Content content;
    IAudioTag* tag = CreateTag();
    tag->Open(path.toStdU32String().c_str());
    const int count = tag->GetItemCount();
    for (int i = 0; i < count; ++i) {
        const TagItem item = tag->GetItem(i);
        if (item.dataKind == 0)
            content.texts.insert(item.type,
                                 QString::fromUcs4(static_cast<const char32_t*>(item.data), item.size / 4));
        else
            content.picture = QByteArray(static_cast<const char*>(item.data), item.size);
    }
    ::operator delete(tag);
    return content;
}

int AudioFile::write(const QString& path, const QHash<int, QString>& texts, const QByteArray* picture)
{
    IAudioTag* tag = CreateTag();
    tag->Open(path.toStdU32String().c_str());
    for (const int type : {1, 0, 2, 3, 4, 5}) {
        if (!texts.contains(type))
            continue;
        tag->RemoveItem(type);
        tag->SetItem(textItem(type, texts.value(type).toStdU32String()));
    }
    if (picture) {
        QByteArray bytes = *picture;
        tag->RemoveItem(TAG_PICTURE);
        tag->SetItem({-1, TAG_PICTURE, 1, bytes.size(), bytes.data()});
    }
    const int result = tag->Save();
    ::operator delete(tag);
    return result;
}

AudioFile::Properties AudioFile::properties(const QString& path)
{
    IAudioDecoder* decoder = CreateDecoder();
    decoder->Open(path.toStdU32String().c_str());
    const Properties found{decoder->GetDuration(), decoder->GetFormat(), decoder->GetSampleRate(),
                           decoder->GetBitrate()};
    decoder->Close();
    ::operator delete(decoder);
    return found;
}

QStringList AudioFile::takeLog()
{
    const std::lock_guard<std::mutex> lock(linesMutex);
    return std::exchange(lines, QStringList());
}
