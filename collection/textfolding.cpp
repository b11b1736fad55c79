#include "collection/textfolding.h"

#include <QStringList>

#include <algorithm>
#include <unordered_map>

namespace {
/// Letters that Unicode does not take apart, and signs that keyboards have one of.
QString plain(QChar character)
{
    switch (character.unicode()) {
    case 0xDF:
        return QStringLiteral("ss");
    case 0xE6:
        return QStringLiteral("ae");
    case 0x153:
        return QStringLiteral("oe");
    case 0xF8:
        return QStringLiteral("o");
    case 0x111:
        return QStringLiteral("d");
    case 0x127:
        return QStringLiteral("h");
    case 0x131:
        return QStringLiteral("i");
    case 0x142:
        return QStringLiteral("l");
    case 0x167:
        return QStringLiteral("t");
    case 0x2018:
    case 0x2019:
    case 0x2BC:
        return QStringLiteral("'");
    case 0x201C:
    case 0x201D:
        return QStringLiteral("\"");
    case 0x2010:
    case 0x2013:
    case 0x2014:
        return QStringLiteral("-");
    default:
        return character;
    }
}

/// What stands on another character, or is not seen at all. Vowels of Indian scripts are marks without a
/// class of combining: they make another word.
bool isDropped(QChar character)
{
    return character.combiningClass() != 0 || character.category() == QChar::Mark_Enclosing ||
           character.category() == QChar::Other_Format ||
           (character.unicode() >= 0xFE00 && character.unicode() <= 0xFE0F); // choose another drawing
}

std::string foldedSlowly(const QString& text)
{
    const QString apart = text.normalized(QString::NormalizationForm_KD);
    QString bare;
    bare.reserve(apart.size());
    for (const QChar character : apart)
        if (!isDropped(character))
            bare.append(character);
    QString folded;
    folded.reserve(bare.size());
    for (const QChar character : bare.toCaseFolded())
        folded.append(plain(character));
    return folded.toStdString();
}

/// Characters are folded one by one, and a collection has few different ones.
const std::string& foldedCharacter(QChar character)
{
    thread_local std::unordered_map<char16_t, std::string> known;
    const auto [place, isNew] = known.try_emplace(character.unicode());
    if (isNew)
        place->second = foldedSlowly(character);
    return place->second;
}
} // namespace

void TextFolding::append(std::string& folded, const QString& text)
{
    if (std::any_of(text.begin(), text.end(), [](QChar unit) { return unit.isSurrogate(); })) {
        folded += foldedSlowly(text);
        return;
    }
    for (const QChar character : text) {
        const char16_t unit = character.unicode();
        if (unit >= 0x80)
            folded += foldedCharacter(character);
        else
            folded += char(unit >= 'A' && unit <= 'Z' ? unit - 'A' + 'a' : unit);
    }
}

std::string TextFolding::folded(const QString& text)
{
    std::string result;
    append(result, text);
    return result;
}

QVector<QByteArray> TextFolding::words(const QString& typed)
{
    QVector<QByteArray> words;
    for (const QString& word : typed.simplified().split(QLatin1Char(' '))) {
        // An accent of its own is a blank that carries it.
        const QByteArray bare = QByteArray::fromStdString(folded(word)).trimmed();
        if (!bare.isEmpty())
            words.append(bare);
    }
    return words;
}
