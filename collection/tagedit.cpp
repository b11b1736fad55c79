#include "collection/tagedit.h"

#include "audiocore/iaudiotag.h"
#include "base/text.h"
#include "collection/saveproblemtext.h"
#include "collection/songfile.h"

#include <memory>

namespace {
using OpenTag = std::unique_ptr<IAudioTag, ReleaseTag>;

/// Null with the reason when the file cannot be read.
OpenTag open(const std::string& path, QString& whyNot)
{
    OpenTag tag(CreateTag());
    if (tag && tag->Open(base::nameToUtf32(path).c_str()) == 0)
        return tag;
    whyNot = QString::fromStdString(tag ? SongFileReader::whyUnreadable(path) : "there is not enough memory");
    return nullptr;
}
} // namespace

QString TagEdit::save(const std::string& path) const
{
    QString whyNot;
    const OpenTag tag = open(path, whyNot);
    if (!tag)
        return whyNot;
    for (auto text = texts.begin(); text != texts.end(); ++text) {
        std::u32string wide = text.value().toStdU32String();
        tag->RemoveItem(text.key());
        tag->SetItem({-1, text.key(), 0, std::int32_t(wide.size() * sizeof(char32_t)), wide.data()});
    }
    if (cover) {
        QByteArray bytes = *cover;
        tag->RemoveItem(TAG_PICTURE);
        tag->SetItem({-1, TAG_PICTURE, 1, bytes.size(), bytes.data()});
    }
    return tag->Save() == 0 ? QString() : SaveProblemText::of(SaveProblemOf(tag.get()));
}

QByteArray CoverFile::read(const std::string& path)
{
    QString whyNot;
    const OpenTag tag = open(path, whyNot);
    QByteArray bytes;
    for (int i = 0; tag && i < tag->GetItemCount(); ++i) {
        const TagItem item = tag->GetItem(i);
        if (item.dataKind != 0 && item.size > 0)
            bytes = QByteArray(static_cast<const char*>(item.data), item.size);
    }
    return bytes;
}

bool CoverFile::isPicture(const QByteArray& bytes)
{
    return bytes.startsWith("\xFF\xD8\xFF") || bytes.startsWith("\x89PNG\r\n\x1A\n");
}
