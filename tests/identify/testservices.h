#pragma once

#include "identify/services.h"
#include "identifyserver.h"

/// The three services of a server in the test, without the pace of the public ones.
class TestServices
{
public:
    explicit TestServices(const IdentifyServer& server, const audiocore::HttpClient::Limits& limits = {})
        : m_client(limits), m_address(server.address().toStdString())
    {
    }

    audiocore::Services all()
    {
        return {{m_address, m_address, m_address, "testkey"},
                {m_client, m_acoustId},
                {m_client, m_musicBrainz},
                {m_client, m_coverArt}};
    }

    void holdMusicBrainz(std::chrono::seconds time) { m_musicBrainz.holdFor(time); }

private:
    const audiocore::HttpClient m_client;
    const std::string m_address;
    audiocore::RateLimit m_acoustId{std::chrono::seconds(0)};
    audiocore::RateLimit m_musicBrainz{std::chrono::seconds(0)};
    audiocore::RateLimit m_coverArt{std::chrono::seconds(0)};
};
