#include "songs/identifywords.h"

#include "audiocore/iaudioidentifier.h"
#include "songs/footlines.h"

FootText IdentifyWords::of(int status, bool hasKey)
{
    const bool byTags = status == IDENTIFY_FOUND_BY_TAGS;
    const bool found = byTags || status == IDENTIFY_FOUND;
    QString text = found ? FootLines::identified(status) : FootLines::notIdentified(status);
    if (!m_keyOffered && !hasKey && (byTags || status == IDENTIFY_NO_KEY)) {
        text += QLatin1Char(' ') + FootLines::keyOffer();
        m_keyOffered = true;
    }
    return {text, !found, {}};
}
