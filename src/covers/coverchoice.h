#pragma once

#include <QString>

/// Pictures that the user chooses as covers.
namespace CoverChoice {
struct Choice
{
    QString path;   ///< of the file to embed; empty where the chosen one is not taken
    QString reason; ///< why not
};

/// What to embed for the chosen file: itself where it holds a JPEG or a PNG, else a PNG made of it in the
/// temporary folder, which stays to the end of the run. Not taken, with a line in the log, is what holds no
/// picture, has more bytes than `most`, or cannot be made a PNG of. What a file holds is told by its content.
/// GUI thread only.
Choice embeddable(const QString& path, qint64 most);
} // namespace CoverChoice
