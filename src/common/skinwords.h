#pragma once

#include <QString>

/// What a button picture says to people who do not see it.
namespace SkinWords {
struct Words
{
    QString name;          ///< for screen readers; empty for a picture that is not listed
    bool inPicture = true; ///< false: the picture shows a sign only, so the name serves as a tool tip, too
};

/// The words of the button picture at this path.
Words of(const QString& picturePath);
} // namespace SkinWords
