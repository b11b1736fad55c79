#include "collection/songlikeness.h"

#include "collection/textfolding.h"

#include <QRegularExpression>

namespace {
/// Without what stands in brackets, the brackets within them, too; one that is never closed stays.
QString withoutRemarks(const QString& text)
{
    static const QString opening = QStringLiteral("([{（［｛【「");
    static const QString closing = QStringLiteral(")]}）］｝】」");
    QString bare;
    QString open; // what would close the brackets that are open
    int begin = 0;
    for (int i = 0; i < text.size(); ++i) {
        const int kind = opening.indexOf(text.at(i));
        if (kind >= 0) {
            if (open.isEmpty()) {
                bare += text.midRef(begin, i - begin) + QLatin1Char(' ');
                begin = i;
            }
            open.append(closing.at(kind));
        } else if (!open.isEmpty() && text.at(i) == open.back()) {
            open.chop(1);
            if (open.isEmpty())
                begin = i + 1;
        }
    }
    return bare + text.midRef(begin);
}

QString withoutGuests(const QString& text, const QRegularExpression& guests)
{
    const QRegularExpressionMatch match = guests.match(text);
    return match.hasMatch() ? text.left(match.capturedStart()) : text;
}

QString folded(const QString& text, const QRegularExpression& guests)
{
    const QString bare = withoutGuests(withoutRemarks(text), guests).simplified();
    const QString kept = bare.isEmpty() ? text : bare;
    return QString::fromStdString(TextFolding::folded(kept)).simplified();
}
} // namespace

QString SongLikeness::artistAndTitle(const QString& artist, const QString& title)
{
    static const auto anyCase = QRegularExpression::CaseInsensitiveOption;
    static const QRegularExpression ofTitle(QStringLiteral("\\s(feat\\.|ft\\.|featuring\\s)"), anyCase);
    static const QRegularExpression ofArtist(QStringLiteral("\\s(feat\\.|ft\\.|(featuring|feat|ft)\\s)"),
                                             anyCase);
    const QString foldedArtist = folded(artist, ofArtist);
    const QString foldedTitle = folded(title, ofTitle);
    if (foldedArtist.isEmpty() || foldedTitle.isEmpty())
        return QString();
    return foldedArtist + QLatin1Char('\n') + foldedTitle;
}
