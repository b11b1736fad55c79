#pragma once

#include "identify/services.h"
#include "identifyserver.h"

#include <optional>

/// The three services of a server in the test, without the pace of the public ones.
class TestServices
{
public:
    explicit TestServices(const IdentifyServer& server) : m_address(server.address().toStdString()) {}

    audiocore::Services all()
    {
        const auto& client = [this](IdentifyServer::Service service) -> const audiocore::HttpClient& {
            return service == m_hurried ? m_impatient : m_patient;
        };
        return {{m_address, m_address, m_address, "testkey"},
                {client(IdentifyServer::AcoustId), m_acoustId},
                {client(IdentifyServer::MusicBrainz), m_musicBrainz},
                {client(IdentifyServer::CoverArt), m_coverArt},
                m_patience};
    }

    /// Lets this service, and no other, take a third of a second at most. Whatever of MusicBrainz is named:
    /// all of it.
    void hurry(IdentifyServer::Service service)
    {
        const bool metadata = service != IdentifyServer::AcoustId && service != IdentifyServer::CoverArt;
        m_hurried = metadata ? IdentifyServer::MusicBrainz : service;
    }
    void setPatience(const audiocore::Patience& patience) { m_patience = patience; }
    void holdMusicBrainz(std::chrono::seconds time) { m_musicBrainz.holdFor(time); }

private:
    const std::string m_address;
    const audiocore::HttpClient m_patient;
    const audiocore::HttpClient m_impatient{{std::chrono::seconds(10), std::chrono::milliseconds(300)}};
    std::optional<IdentifyServer::Service> m_hurried;
    audiocore::Patience m_patience{std::chrono::hours(1), std::chrono::hours(1)}; // on a busy machine
    audiocore::RateLimit m_acoustId{std::chrono::seconds(0)};
    audiocore::RateLimit m_musicBrainz{std::chrono::seconds(0)};
    audiocore::RateLimit m_coverArt{std::chrono::seconds(0)};
};
