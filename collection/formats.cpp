#include "collection/formats.h"

#include <algorithm>
#include <iterator>

namespace {
struct Format
{
    const char* ending;
    const char* name;   ///< oddity 8: these capitals
    const char* listed; ///< as lists and panels show it
    int code;           ///< the audio core's
    bool byNameAlone;   ///< oddity 20
};

/// In the order in which the dialog names them.
constexpr Format formats[] = {{"mp3", "mp3", "MP3", 2, false},    {"m4a", "M4a", "M4A", 4, false},
                              {"ape", "APE", "APE", 6, false},    {"aac", "AAC", "AAC", 3, false},
                              {"flac", "Flac", "FLAC", 7, false}, {"wma", "Wma", "WMA", 1, true},
                              {"wav", "wav", "WAV", 0, false},    {"ogg", "OGG", "OGG", 5, false}};

/// Null for a code without a row.
const Format* rowOf(int formatCode)
{
    const auto* const row = std::find_if(std::begin(formats), std::end(formats),
                                         [formatCode](const Format& one) { return one.code == formatCode; });
    return row == std::end(formats) ? nullptr : row;
}

bool hasEnding(const QString& lastThree, bool byNameAlone)
{
    return std::any_of(std::begin(formats), std::end(formats), [&](const Format& format) {
        return format.byNameAlone == byNameAlone &&
               lastThree.compare(QLatin1String(format.ending).right(3), Qt::CaseInsensitive) == 0;
    });
}
} // namespace

bool Formats::isMusicEnding(const QString& lastThree)
{
    return hasEnding(lastThree, false);
}

bool Formats::isWindowsMediaEnding(const QString& lastThree)
{
    return hasEnding(lastThree, true);
}

QString Formats::namePatterns()
{
    QStringList patterns;
    for (const Format& format : formats)
        patterns.append(QLatin1String("*.") + QLatin1String(format.ending));
    return patterns.join(' ');
}

QStringList Formats::dropped()
{
    QStringList names;
    for (const Format& format : formats)
        if (!format.byNameAlone)
            names.append(QLatin1String(format.listed));
    return names;
}

QString Formats::nameOf(int formatCode)
{
    const Format* const row = rowOf(formatCode);
    return QLatin1String(row ? row->name : "None");
}

QString Formats::listedName(int formatCode)
{
    const Format* const row = rowOf(formatCode);
    return QLatin1String(row ? row->listed : "MP3"); // Oddity 9: also for negative codes.
}
