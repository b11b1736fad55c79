#include "collection/coretags.h"

#include "audiocore/iaudiotag.h"
#include "audiocore/saveproblem.h"
#include "base/text.h"
#include "collection/saveproblemtext.h"
#include "collection/songfile.h"
#include "collection/tagitems.h"

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

const QStringList& TagFields::names()
{
    static const QStringList all = {QStringLiteral("title"), QStringLiteral("artist"),
                                    QStringLiteral("album"), QStringLiteral("genre"),
                                    QStringLiteral("year"),  QStringLiteral("track")};
    static_assert(TAG_TITLE == 0 && TAG_TRACK == 5, "the names are in the order of the types");
    return all;
}

int TagFields::typeOf(const QString& name)
{
    return names().indexOf(name);
}

QString CoreTags::read(const std::string& path, TagTexts& held)
{
    held = TagTexts();
    QString whyNot;
    const OpenTag tag = open(path, whyNot);
    for (int i = 0; tag && i < tag->GetItemCount(); ++i) {
        const TagItem item = tag->GetItem(i);
        if (item.size <= 0)
            continue;
        if (item.dataKind != 0)
            held.picture = QByteArray(static_cast<const char*>(item.data), item.size);
        else if (item.type >= 0 && item.type < TagFields::names().size())
            held.texts.insert(TagFields::names().at(item.type), TagItems::textOf(item));
    }
    return whyNot;
}

QString CoreTags::write(const std::string& path, const TagTexts& change)
{
    QString whyNot;
    const OpenTag tag = open(path, whyNot);
    if (!tag)
        return whyNot;
    for (auto text = change.texts.begin(); text != change.texts.end(); ++text)
        TagItems::replaceText(*tag, TagFields::typeOf(text.key()), text.value());
    if (change.picture)
        TagItems::replacePicture(*tag, *change.picture);
    return tag->Save() == 0 ? QString() : SaveProblemText::of(SaveProblemOf(tag.get()));
}

bool CoreTags::isPicture(const QByteArray& bytes)
{
    return bytes.startsWith("\xFF\xD8\xFF") || bytes.startsWith("\x89PNG\r\n\x1A\n");
}
