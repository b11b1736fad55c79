#pragma once

#include <QByteArray>
#include <QString>
#include <QVector>

#include <string>

/// Texts as people look for them: without regard to case, accents, width, ligatures and the shape of quotes
/// and dashes. "Á", "á", "Ａ" and "a" are one, so are "ﬁ" and "fi". Any thread.
namespace TextFolding {
/// Adds the folded text, in UTF-8.
void append(std::string& folded, const QString& text);
std::string folded(const QString& text);
/// The words of what somebody typed, folded; none is empty.
QVector<QByteArray> words(const QString& typed);
} // namespace TextFolding
