#include "collection/formats.h"

namespace {
struct Format
{
    const char* name;   ///< oddity 8: these capitals
    const char* listed; ///< as lists and panels show it
    const char* ending; ///< oddities 19 and 20: three letters; null comes in by the dialog alone
};

/// By the audio core's code.
constexpr Format formats[] = {{"wav", "WAV", "wav"}, {"Wma", "WMA", nullptr}, {"mp3", "MP3", "mp3"},
                              {"AAC", "AAC", "aac"}, {"M4a", "M4A", "m4a"},   {"OGG", "OGG", "ogg"},
                              {"APE", "APE", "ape"}, {"Flac", "FLAC", "lac"}};

/// Null for a code without a row.
const Format* rowOf(int formatCode)
{
    const bool known = formatCode >= 0 && formatCode < int(sizeof formats / sizeof *formats);
    return known ? &formats[formatCode] : nullptr;
}
} // namespace

bool Formats::isMusicEnding(const QString& lastThree)
{
    for (const Format& format : formats)
        if (format.ending && lastThree.compare(QLatin1String(format.ending), Qt::CaseInsensitive) == 0)
            return true;
    return false;
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
