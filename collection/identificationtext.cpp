#include "collection/identificationtext.h"

#include "audiocore/iaudioidentifier.h"

QString IdentificationText::whyNot(int status)
{
    switch (status) {
    case IDENTIFY_NO_MATCH:
        return QStringLiteral("the services know no such recording");
    case IDENTIFY_NO_FILE:
        return QStringLiteral("the file cannot be read");
    case IDENTIFY_NO_AUDIO:
        return QStringLiteral("the file holds no sound that can be decoded");
    case IDENTIFY_TOO_SHORT:
        return QStringLiteral("the song is too short");
    case IDENTIFY_NO_KEY:
        return QStringLiteral("the services know no song that fits its tags");
    case IDENTIFY_BAD_ADDRESS:
        return QStringLiteral("the address of a service is not safe");
    case IDENTIFY_NO_CONNECTION:
        return QStringLiteral("there is no connection to the services");
    case IDENTIFY_REFUSED:
        return QStringLiteral("a service refused to answer");
    case IDENTIFY_NOT_UNDERSTOOD:
        return QStringLiteral("the answer of a service makes no sense");
    case IDENTIFY_NO_MEMORY:
        return QStringLiteral("there is not enough memory");
    case IDENTIFY_FOUND:
    case IDENTIFY_FOUND_BY_TAGS:
    case IDENTIFY_CANCELLED:
        return QString();
    default:
        return QStringLiteral("there is nothing to identify songs with");
    }
}

QString IdentificationText::keyOffer()
{
    return QStringLiteral(
        "With a free key from https://acoustid.org/new-application songs are identified by their sound.");
}
