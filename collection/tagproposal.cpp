#include "collection/tagproposal.h"

#include "collection/coretags.h"
#include "collection/keptcovers.h"

#include <algorithm>

TagProposal::TagProposal(const TagTexts& held, const TagTexts& known, Fill fill)
{
    const auto isOffered = [fill](const auto& before, const auto& after) {
        return !after.isEmpty() && after != before && (before.isEmpty() || fill == Fill::All);
    };
    for (const QString& name : TagFields::names()) {
        const QString before = held.texts.value(name);
        const QString after = known.texts.value(name);
        if (isOffered(before, after))
            m_fields.append({name, before, after});
    }
    const QByteArray before = held.picture.value_or(QByteArray());
    const QByteArray after = known.picture.value_or(QByteArray());
    if (!isOffered(before, after))
        return;
    m_cover = {true, before.size(), after.size()};
    m_coverBefore = KeptCovers::nameOf(before);
    m_picture = after;
}

TagTexts TagProposal::change() const
{
    TagTexts change;
    for (const Field& field : m_fields)
        change.texts.insert(field.name, field.after);
    if (m_cover.changes)
        change.picture = m_picture;
    return change;
}

bool TagProposal::fits(const TagTexts& held) const
{
    const bool textsFit = std::all_of(m_fields.begin(), m_fields.end(), [&held](const Field& field) {
        const QString text = held.texts.value(field.name);
        return text == field.before || text == field.after;
    });
    const QByteArray cover = held.picture.value_or(QByteArray());
    return textsFit && (!m_cover.changes || cover == m_picture || KeptCovers::nameOf(cover) == m_coverBefore);
}
