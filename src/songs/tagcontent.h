#pragma once

#include <QByteArray>
#include <QString>

class IAudioTag;

/// What an edit replaces in a song's tag.
struct TagContent
{
    QString title;
    QString artist;
    QString album;
    QString genre;
    QString year;       ///< decimal
    QString track;      ///< decimal
    QByteArray picture; ///< the bytes of its file; empty without one; of several the last one, as in lists
    int pictures = 0;   ///< in its file; a save leaves one at the most

    /// What an open tag holds.
    static TagContent of(IAudioTag& tag);
    /// Of one of the six types of texts (TagItemType); empty for any other.
    QString text(int type) const;
    /// Puts it into an open tag in place of what that held, and saves the tag. The result of the save.
    int save(IAudioTag& tag) const;
    /// The same without the picture.
    int saveTexts(IAudioTag& tag) const;
};
