#pragma once

#include "collection/tagfiles.h"

#include <QString>
#include <QVector>

#include <string>

/// What the tags of a song would become by what somebody else knows of it: of that what is not so already.
class TagProposal
{
public:
    enum class Fill {
        All,        ///< whatever is known
        OnlyMissing ///< where the song has nothing
    };
    struct Field
    {
        QString name;
        QString before;
        QString after;
    };
    struct Cover
    {
        bool changes = false;
        int bytesBefore = 0; ///< 0 for none
        int bytesAfter = 0;
    };

    TagProposal() = default;
    TagProposal(const TagTexts& held, const TagTexts& known, Fill fill);

    bool isEmpty() const { return m_fields.isEmpty() && !m_cover.changes; }
    /// In the order in which fields are named.
    const QVector<Field>& fields() const { return m_fields; }
    const Cover& cover() const { return m_cover; }
    TagTexts change() const;
    /// Whether all of what would change is, in these tags, as it was before or as it would become.
    bool fits(const TagTexts& held) const;

private:
    QVector<Field> m_fields;
    Cover m_cover;
    QByteArray m_picture;      ///< that the song would get
    std::string m_coverBefore; ///< by KeptCovers::nameOf
};
