#include "collection/formats.h"

namespace {
struct Format
{
    const char* name;   ///< oddity 8: these capitals
    const char* ending; ///< oddities 19 and 20: three letters; null comes in by the dialog alone
};

/// By the audio core's code.
constexpr Format formats[] = {{"wav", "wav"}, {"Wma", nullptr}, {"mp3", "mp3"}, {"AAC", "aac"},
                              {"M4a", "m4a"}, {"OGG", "ogg"},   {"APE", "ape"}, {"Flac", "lac"}};
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
    if (formatCode < 0 || formatCode >= int(sizeof formats / sizeof *formats))
        return QStringLiteral("None");
    return QLatin1String(formats[formatCode].name);
}
