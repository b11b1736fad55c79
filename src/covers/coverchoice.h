#pragma once

#include <QString>

/// Pictures that the user chooses as covers.
namespace CoverChoice {
/// The file to embed for the chosen one: itself where it holds a JPEG or a PNG, else a PNG made of it in the
/// temporary folder, which stays to the end of the run. Empty, with a line in the log, where there is no
/// picture or no PNG can be written. What a file holds is told by its content. GUI thread only.
QString embeddable(const QString& path);
} // namespace CoverChoice
