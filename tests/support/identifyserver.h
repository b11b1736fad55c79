#pragma once

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QString>
#include <QVector>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>
#include <vector>

/// Plays the three services of an identification on a port of this machine, in threads of its own: it answers
/// as they document it, and misbehaves on demand. All methods may be called while it serves.
class IdentifyServer
{
public:
    /// MusicBrainz answers about a recording, Releases with the list of all its releases, page by page,
    /// ReleaseTracks about one of them, and Search with the recordings that there are by what is known.
    enum Service { AcoustId, MusicBrainz, Releases, ReleaseTracks, CoverArt, Search };
    enum class Manner {
        Proper,
        Silent,          ///< takes the request and says nothing
        Trickling,       ///< a byte now and then
        CutOff,          ///< breaks off in the middle of the announced body
        SlowDown,        ///< 503 with the time to wait
        ServerError,     ///< 500
        NotFound,        ///< 404
        WrongJson,       ///< 200 with half an answer, complete as a transfer
        PlainRedirect,   ///< to another machine without encryption
        EndlessRedirect, ///< to itself
        EndlessBody,
        EndlessHeaders
    };
    /// A release that the recording is on.
    struct Release
    {
        QByteArray id;
        QByteArray title;
        QByteArray date;
        QByteArray status = "Official";
        QByteArray secondaryType; ///< of an album; empty for none
        int track = 1;
    };
    struct Request
    {
        Service service = AcoustId;
        QByteArray method;
        QByteArray target;                     ///< path and query
        QHash<QByteArray, QByteArray> headers; ///< names in lower case
        QByteArray body;
        std::chrono::steady_clock::time_point time;

        /// A field of the form in the body, decoded.
        QByteArray field(const QByteArray& name) const;
    };

    IdentifyServer();
    ~IdentifyServer();
    IdentifyServer(const IdentifyServer&) = delete;
    IdentifyServer& operator=(const IdentifyServer&) = delete;

    /// "http://127.0.0.1:" and the port.
    QByteArray address() const;
    /// Points this process's identifications here, with a key.
    void putIntoEnvironment() const;

    /// What a service says when it is Proper. Without any: "Midnight Ferry" by "Ida Marlowe feat. The Salt
    /// Choir", a recording of just the length asked for, track 4 of "Paper Lanterns", 2012, "pop", and
    /// picture(). Search finds it by whatever.
    void setAnswer(Service service, const QByteArray& body);
    /// Puts the recording on these releases, for all that MusicBrainz answers.
    void setReleases(const QVector<Release>& releases);
    /// Answers these targets, decoded as they are here, and of AcoustID and MusicBrainz no others.
    void setReplay(const QHash<QByteArray, QByteArray>& answers);
    /// How a service behaves in the next `times` requests, Proper afterwards; times < 0: from now on.
    void setManner(Service service, Manner manner, int times = -1);
    /// The waiting time that goes with SlowDown; empty for none.
    void setRetryAfter(const QByteArray& value);

    QList<Request> requests() const;
    QList<Request> requests(Service service) const;
    /// Waits until this many requests have come to the service; false after two minutes.
    bool waitForRequests(Service service, int count) const;

    static QByteArray picture();
    static QByteArray recordingAnswer();
    /// An identifier as the service makes them; they sort as their numbers do.
    static QByteArray identifier(int number);
    /// An answer that names one recording of the length.
    static QByteArray lookupAnswer(const QByteArray& seconds);
    static QByteArray searchAnswer(qint64 milliseconds);
    /// An answer that names none.
    static QByteArray emptyLookupAnswer() { return R"({"status": "ok", "results": []})"; }

private:
    struct Behaviour
    {
        Manner manner = Manner::Proper;
        int times = 0;
        QByteArray answer;
    };

    void serve();
    void talk(int connection);
    bool receive(int connection, Request& request) const;
    Manner note(const Request& request);
    QByteArray properAnswer(const Request& request) const;
    QByteArray recordingOnReleases() const;
    QByteArray pageOfReleases(const Request& request) const;
    QByteArray releaseWithTracks(const Request& request) const;
    void answer(int connection, const Request& request, Manner manner) const;
    void misbehave(int connection, const Request& request, Manner manner, const QByteArray& proper) const;
    void sendForEver(int connection, const QByteArray& head, const QByteArray& part, int pause) const;
    bool send(int connection, const QByteArray& bytes) const;

    mutable std::mutex m_mutex; // not Qt's, which the thread sanitizer does not see through
    mutable std::condition_variable m_came;
    QList<Request> m_requests;
    QHash<int, Behaviour> m_behaviours;
    QByteArray m_retryAfter = "1";
    QHash<QByteArray, QByteArray> m_replay; ///< by target
    QVector<Release> m_releases;            ///< by their identifiers
    std::atomic<bool> m_stopping{false};
    int m_socket = -1;
    int m_port = 0;
    std::thread m_listener;
    std::vector<std::thread> m_talks;
};
