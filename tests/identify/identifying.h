#pragma once

#include "audiocore/tagitem.h"
#include "audiofile.h"
#include "fixtures.h"
#include "identify/identification.h"
#include "testservices.h"

#include <QtTest>

#include <optional>

using audiocore::Identification;
using Manner = IdentifyServer::Manner;
using Service = IdentifyServer::Service;
Q_DECLARE_METATYPE(Manner)
Q_DECLARE_METATYPE(Service)

namespace Identifying {
constexpr int songMilliseconds = 20000;

inline QString song()
{
    return Fixtures::tone("flac", songMilliseconds);
}

/// A song in the folder with what the server's recording is called.
inline QString taggedSong(const QString& folder,
                          const QHash<int, QString>& texts = {{TAG_TITLE, "Midnight Ferry"},
                                                              {TAG_ARTIST, "Ida Marlowe"},
                                                              {TAG_ALBUM, "Paper Lanterns"}})
{
    QString path = Fixtures::copyTone("flac", folder);
    AudioFile::write(path, texts);
    return path;
}

inline audiocore::Services withoutKey(audiocore::Services services)
{
    services.addresses.key.clear();
    return services;
}

inline Identification identify(const audiocore::Services& services, const QString& path = song())
{
    const audiocore::Cancellation never;
    return audiocore::identifyFile(path.toStdString(), services, never);
}

/// @param hurried is to answer in a third of a second, if any is.
inline Identification identify(const IdentifyServer& server, std::optional<Service> hurried = std::nullopt)
{
    TestServices services(server);
    if (hurried)
        services.hurry(*hurried);
    return identify(services.all());
}

inline QString text(const Identification& found, int type)
{
    return QString::fromStdU32String(found.texts[size_t(type)]);
}

/// So many releases of which the last in the service's order is the original, and the others compilations.
inline QVector<IdentifyServer::Release> discography(int count)
{
    QVector<IdentifyServer::Release> releases;
    for (int i = 1; i < count; ++i)
        releases.append({IdentifyServer::identifier(i), "Best of " + QByteArray::number(i), "1999-01-01",
                         "Official", "Compilation", 1});
    releases.append({IdentifyServer::identifier(count), "The Original", "1975-11-21", "Official", "", 11});
    return releases;
}

inline QByteArrayList targets(const IdentifyServer& server, Service service)
{
    QByteArrayList result;
    for (const IdentifyServer::Request& request : server.requests(service))
        result.append(request.target);
    return result;
}

inline QByteArray nameOf(Service service)
{
    if (service == IdentifyServer::AcoustId)
        return "AcoustID";
    return service == IdentifyServer::CoverArt ? "Cover Art Archive" : "MusicBrainz";
}
} // namespace Identifying
