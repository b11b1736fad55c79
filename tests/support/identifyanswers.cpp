// What the services say when they are asked about the one recording that they know.
#include "fixtures.h"
#include "identifyserver.h"

QByteArray IdentifyServer::picture()
{
    static const QByteArray jpeg = Fixtures::jpeg(500, 500, 7);
    return jpeg;
}

QByteArray IdentifyServer::identifier(int number)
{
    return QByteArray::number(number).rightJustified(8, '0') + "-2b5b-4fd5-a0c8-2b4a0b9f4a4e";
}

QByteArray IdentifyServer::lookupAnswer(const QByteArray& seconds)
{
    return R"({"status": "ok", "results": [{"id": "9ff43b6a-4f16-427c-93c2-92307ca505e0", "score": 0.982341,
        "recordings": [{"id": "cd2e7c47-16f5-46c6-a37c-a1eb7bf599ff", "title": "Midnight Ferry", "sources": 12,
        "duration": )" +
           seconds +
           R"(, "artists": [{"id": "6d7b7cd4-254b-4c25-83f6-dd20f98ceacd", "name": "Ida Marlowe"}]}]}]})";
}

QByteArray IdentifyServer::searchAnswer(qint64 milliseconds)
{
    return R"({"created": "2024-05-01T10:00:00.000Z", "count": 1, "offset": 0, "recordings": [
        {"id": "cd2e7c47-16f5-46c6-a37c-a1eb7bf599ff", "score": 100, "title": "Midnight Ferry", "video": null,
         "length": )" +
           QByteArray::number(milliseconds) +
           R"(, "artist-credit": [{"name": "Ida Marlowe", "joinphrase": " feat. ",
                "artist": {"id": "6d7b7cd4-254b-4c25-83f6-dd20f98ceacd", "name": "Ida Marlowe",
                           "sort-name": "Marlowe, Ida"}},
               {"name": "The Salt Choir", "artist": {"id": "10adbe5e-a2c0-4bf3-8249-2b4cbf6e6ca8",
                "name": "The Salt Choir", "sort-name": "Salt Choir, The"}}],
         "first-release-date": "2012-03-05",
         "releases": [{"id": "22d6b8a1-2b5b-4fd5-a0c8-2b4a0b9f4a4e", "count": 1, "title": "Paper Lanterns",
            "status": "Official", "date": "2012-03-05", "country": "GB", "track-count": 11,
            "release-group": {"id": "97ab4a4a-2c1d-4e12-9a3c-3e5a2f0a6f9d", "title": "Paper Lanterns",
                "primary-type": "Album"},
            "media": [{"position": 1, "format": "CD", "track-count": 11, "track-offset": 3,
                "track": [{"id": "f9a1d9c5-3d0e-4e0a-8c0b-6e1f0a9b5d11", "number": "4",
                           "title": "Midnight Ferry"}]}]}]}]})";
}

QByteArray IdentifyServer::recordingAnswer()
{
    return R"({"id": "cd2e7c47-16f5-46c6-a37c-a1eb7bf599ff", "title": "Midnight Ferry", "length": 20000,
        "disambiguation": "", "video": false, "first-release-date": "2012-03-05",
        "genres": [{"id": "911c7bbb-172d-4df8-9478-dbff4296e791", "name": "pop", "count": 4, "disambiguation": ""},
                   {"id": "ceeaa283-5d7b-4202-8d1d-e25d116b2a18", "name": "alternative rock", "count": 1}],
        "artist-credit": [{"name": "Ida Marlowe", "joinphrase": " feat. ", "artist": {"name": "Ida Marlowe",
                           "sort-name": "Marlowe, Ida", "id": "6d7b7cd4-254b-4c25-83f6-dd20f98ceacd"}},
                          {"name": "The Salt Choir", "joinphrase": "", "artist": {"name": "The Salt Choir",
                           "sort-name": "Salt Choir, The", "id": "10adbe5e-a2c0-4bf3-8249-2b4cbf6e6ca8"}}],
        "releases": [{"id": "22d6b8a1-2b5b-4fd5-a0c8-2b4a0b9f4a4e", "title": "Paper Lanterns", "status": "Official",
            "date": "2012-03-05", "country": "GB", "quality": "normal",
            "release-group": {"id": "97ab4a4a-2c1d-4e12-9a3c-3e5a2f0a6f9d", "title": "Paper Lanterns",
                "primary-type": "Album", "secondary-types": [], "first-release-date": "2012-03-05"},
            "media": [{"position": 1, "format": "CD", "title": "", "track-count": 11, "track-offset": 3,
                "tracks": [{"id": "f9a1d9c5-3d0e-4e0a-8c0b-6e1f0a9b5d11", "position": 4, "number": "4",
                            "title": "Midnight Ferry", "length": 20000}]}]}]})";
}
