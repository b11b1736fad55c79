#include "identifyserver.h"

#include "fixtures.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <QUrl>
#include <QUrlQuery>

#include <algorithm>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {
constexpr int pollMilliseconds = 10;

bool isReady(int descriptor, short what)
{
    pollfd wanted{descriptor, what, 0};
    return ::poll(&wanted, 1, pollMilliseconds) > 0;
}

QByteArray head(const QByteArray& status, const QByteArray& type, int length,
                const QByteArray& more = QByteArray())
{
    return "HTTP/1.1 " + status + "\r\nContent-Type: " + type +
           "\r\nContent-Length: " + QByteArray::number(length) + "\r\nConnection: close\r\n" + more + "\r\n";
}

QByteArray redirect(const QByteArray& address)
{
    return head("307 Temporary Redirect", "text/plain", 0, "Location: " + address + "\r\n");
}

IdentifyServer::Service serviceOf(const QByteArray& target)
{
    if (target.startsWith("/v2/lookup"))
        return IdentifyServer::AcoustId;
    if (target.startsWith("/ws/2/release?"))
        return IdentifyServer::Releases;
    if (target.startsWith("/ws/2/release/"))
        return IdentifyServer::ReleaseTracks;
    if (target.startsWith("/ws/2/recording?"))
        return IdentifyServer::Search;
    return target.startsWith("/ws/2/") ? IdentifyServer::MusicBrainz : IdentifyServer::CoverArt;
}

/// What goes with an error's code, in the service's form.
QByteArray errorBody(IdentifyServer::Service service, const QByteArray& error)
{
    if (service == IdentifyServer::AcoustId)
        return R"({"status": "error", "error": {"code": 5, "message": ")" + error + R"("}})";
    if (service == IdentifyServer::CoverArt)
        return "<!doctype html><title>" + error + "</title>";
    return R"({"error": ")" + error + R"(", "help": "For usage, please see the documentation."})";
}

const QString recordingId = QStringLiteral("cd2e7c47-16f5-46c6-a37c-a1eb7bf599ff");

QJsonObject trackObject(int position)
{
    return {{"id", QString(IdentifyServer::identifier(900 + position))},
            {"position", position},
            {"number", QString::number(position)},
            {"title", QStringLiteral("Track %1").arg(position)},
            {"length", 20000}};
}

QJsonObject releaseObject(const IdentifyServer::Release& release)
{
    QJsonArray secondaryTypes;
    if (!release.secondaryType.isEmpty())
        secondaryTypes.append(QString(release.secondaryType));
    return {{"id", QString(release.id)},
            {"title", QString(release.title)},
            {"status", QString(release.status)},
            {"date", QString(release.date)},
            {"country", QStringLiteral("GB")},
            {"quality", QStringLiteral("normal")},
            {"release-group", QJsonObject{{"id", QString(release.id)},
                                          {"title", QString(release.title)},
                                          {"primary-type", QStringLiteral("Album")},
                                          {"secondary-types", secondaryTypes},
                                          {"first-release-date", QString(release.date)}}}};
}

/// The release's one medium with the tracks told of.
QJsonArray mediaArray(const QJsonArray& tracks, int offset)
{
    return {QJsonObject{{"position", 1},
                        {"format", QStringLiteral("CD")},
                        {"track-count", 12},
                        {"track-offset", offset},
                        {"tracks", tracks}}};
}

/// The middle of the lengths that a search asks for; 0 when it asks for none.
qint64 lengthSearched(const QByteArray& target)
{
    static const QRegularExpression range("dur:\\[(\\d+) TO (\\d+)\\]");
    const auto found = range.match(QUrl::fromPercentEncoding(target));
    return (found.captured(1).toLongLong() + found.captured(2).toLongLong()) / 2;
}

QByteArray toJson(const QJsonObject& object)
{
    return QJsonDocument(object).toJson(QJsonDocument::Compact);
}
} // namespace

QByteArray IdentifyServer::Request::field(const QByteArray& name) const
{
    QByteArray form = body;
    const QUrlQuery query(QString::fromLatin1(form.replace('+', ' ')));
    return query.queryItemValue(QString::fromLatin1(name), QUrl::FullyDecoded).toUtf8();
}

IdentifyServer::IdentifyServer()
{
    m_socket = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof address;
    auto* name = reinterpret_cast<sockaddr*>(&address);
    if (::bind(m_socket, name, length) != 0 || ::listen(m_socket, 64) != 0 ||
        ::getsockname(m_socket, name, &length) != 0)
        qFatal("no port to listen on");
    m_port = ntohs(address.sin_port);
    m_listener = std::thread([this] { serve(); });
}

IdentifyServer::~IdentifyServer()
{
    m_stopping = true;
    m_listener.join();
    for (std::thread& talk : m_talks)
        talk.join();
    ::close(m_socket);
}

QByteArray IdentifyServer::address() const
{
    return "http://127.0.0.1:" + QByteArray::number(m_port);
}

void IdentifyServer::putIntoEnvironment() const
{
    for (const char* name : {"MELODRIFT_ACOUSTID_URL", "MELODRIFT_MUSICBRAINZ_URL", "MELODRIFT_COVERART_URL"})
        qputenv(name, address());
    qputenv("MELODRIFT_ACOUSTID_KEY", "testkey");
}

void IdentifyServer::setAnswer(Service service, const QByteArray& body)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_behaviours[service].answer = body;
}

void IdentifyServer::setManner(Service service, Manner manner, int times)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_behaviours[service].manner = manner;
    m_behaviours[service].times = times;
}

void IdentifyServer::setReleases(const QVector<Release>& releases)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_releases = releases;
    std::sort(m_releases.begin(), m_releases.end(),
              [](const Release& one, const Release& other) { return one.id < other.id; });
}

void IdentifyServer::setReplay(const QHash<QByteArray, QByteArray>& answers)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_replay = answers;
}

void IdentifyServer::setRetryAfter(const QByteArray& value)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_retryAfter = value;
}

QList<IdentifyServer::Request> IdentifyServer::requests() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_requests;
}

QList<IdentifyServer::Request> IdentifyServer::requests(Service service) const
{
    QList<Request> chosen;
    for (const Request& request : requests())
        if (request.service == service)
            chosen.append(request);
    return chosen;
}

bool IdentifyServer::waitForRequests(Service service, int count) const
{
    std::unique_lock<std::mutex> lock(m_mutex);
    return m_came.wait_for(lock, std::chrono::seconds(120), [this, service, count] {
        return std::count_if(m_requests.begin(), m_requests.end(), [service](const Request& request) {
                   return request.service == service;
               }) >= count;
    });
}

void IdentifyServer::serve()
{
    while (!m_stopping) {
        if (!isReady(m_socket, POLLIN))
            continue;
        const int connection = ::accept4(m_socket, nullptr, nullptr, SOCK_CLOEXEC);
        if (connection >= 0)
            m_talks.emplace_back([this, connection] { talk(connection); });
    }
}

void IdentifyServer::talk(int connection)
{
    Request request;
    if (receive(connection, request))
        answer(connection, request, note(request));
    ::close(connection);
}

bool IdentifyServer::receive(int connection, Request& request) const
{
    QByteArray bytes;
    int end = -1;
    while (end < 0 || bytes.size() < end + 4 + request.headers.value("content-length").toInt()) {
        char block[4096];
        while (!isReady(connection, POLLIN))
            if (m_stopping)
                return false;
        const ssize_t got = ::recv(connection, block, sizeof block, 0);
        if (got <= 0)
            return false;
        bytes.append(block, int(got));
        if (end >= 0)
            continue;
        end = bytes.indexOf("\r\n\r\n");
        if (end < 0)
            continue;
        QList<QByteArray> lines = bytes.left(end).split('\n');
        const QList<QByteArray> first = lines.takeFirst().trimmed().split(' ');
        request.method = first.value(0);
        request.target = first.value(1);
        for (const QByteArray& line : qAsConst(lines))
            request.headers.insert(line.left(line.indexOf(':')).toLower(),
                                   line.mid(line.indexOf(':') + 1).trimmed());
    }
    request.body = bytes.mid(end + 4);
    request.service = serviceOf(request.target);
    request.time = std::chrono::steady_clock::now();
    return true;
}

IdentifyServer::Manner IdentifyServer::note(const Request& request)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_requests.append(request);
    m_came.notify_all();
    Behaviour& behaviour = m_behaviours[request.service];
    if (!m_replay.isEmpty() && request.service != CoverArt &&
        !m_replay.contains(QByteArray::fromPercentEncoding(request.target)))
        return Manner::NotFound;
    if (behaviour.times == 0)
        return Manner::Proper;
    if (behaviour.times > 0)
        --behaviour.times;
    return behaviour.manner;
}

QByteArray IdentifyServer::properAnswer(const Request& request) const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    const QByteArray own = m_replay.value(QByteArray::fromPercentEncoding(request.target),
                                          m_behaviours.value(request.service).answer);
    if (!own.isNull())
        return own;
    switch (request.service) {
    case AcoustId:
        return lookupAnswer(request.field("duration"));
    case MusicBrainz:
        return m_releases.isEmpty() ? recordingAnswer() : recordingOnReleases();
    case Releases:
        return pageOfReleases(request);
    case ReleaseTracks:
        return releaseWithTracks(request);
    case Search:
        return searchAnswer(lengthSearched(request.target));
    default:
        return picture();
    }
}

/// Names 25 releases at most, in the order of their identifiers.
QByteArray IdentifyServer::recordingOnReleases() const
{
    QJsonArray releases;
    for (const Release& release : m_releases.mid(0, 25)) {
        QJsonObject object = releaseObject(release);
        object.insert("media", mediaArray({trackObject(release.track)}, release.track - 1));
        releases.append(object);
    }
    QJsonObject recording = QJsonDocument::fromJson(recordingAnswer()).object();
    recording.insert("releases", releases);
    return toJson(recording);
}

QByteArray IdentifyServer::pageOfReleases(const Request& request) const
{
    const QUrlQuery query(QUrl::fromEncoded(request.target));
    const QByteArray status = query.queryItemValue("status").toLatin1();
    const int offset = query.queryItemValue("offset").toInt();
    QVector<Release> chosen;
    for (const Release& release : m_releases)
        if (status.isEmpty() || release.status.toLower() == status)
            chosen.append(release);
    QJsonArray releases;
    for (const Release& release : chosen.mid(offset, query.queryItemValue("limit").toInt()))
        releases.append(releaseObject(release));
    return toJson({{"release-count", chosen.size()}, {"release-offset", offset}, {"releases", releases}});
}

QByteArray IdentifyServer::releaseWithTracks(const Request& request) const
{
    const QByteArray id = request.target.mid(int(qstrlen("/ws/2/release/")), 36);
    const auto release = std::find_if(m_releases.begin(), m_releases.end(),
                                      [&id](const Release& known) { return known.id == id; });
    if (release == m_releases.end())
        return errorBody(ReleaseTracks, "Not Found");
    QJsonArray tracks;
    for (int position = 1; position <= 12; ++position) {
        const QString own = position == release->track ? recordingId : QString(identifier(500 + position));
        QJsonObject track = trackObject(position);
        track.insert("recording", QJsonObject{{"id", own}, {"title", track.value("title")}});
        tracks.append(track);
    }
    QJsonObject object = releaseObject(*release);
    object.insert("media", mediaArray(tracks, 0));
    object.insert("genres", QJsonArray{QJsonObject{{"name", QStringLiteral("soul")}, {"count", 2}}});
    return toJson(object);
}

void IdentifyServer::answer(int connection, const Request& request, Manner manner) const
{
    const QByteArray proper = properAnswer(request);
    if (manner != Manner::Proper) {
        misbehave(connection, request, manner, proper);
        return;
    }
    // The archive keeps its pictures elsewhere.
    if (request.target.contains("/front-500"))
        send(connection, redirect(address() + "/download/front.jpg"));
    else
        send(connection,
             head("200 OK", request.service == CoverArt ? "image/jpeg" : "application/json; charset=utf-8",
                  proper.size()) +
                 proper);
}

void IdentifyServer::misbehave(int connection, const Request& request, Manner manner,
                               const QByteArray& proper) const
{
    const QByteArray half = proper.left(proper.size() / 2);
    const QByteArray endless = "HTTP/1.1 200 OK\r\nConnection: close\r\n";
    switch (manner) {
    case Manner::Silent:
        sendForEver(connection, "", "", pollMilliseconds);
        break;
    case Manner::Trickling:
        sendForEver(connection, head("200 OK", "application/json", 100000), " ", pollMilliseconds);
        break;
    case Manner::CutOff:
        send(connection, head("200 OK", "application/json", proper.size()) + half);
        break;
    case Manner::SlowDown: {
        const std::lock_guard<std::mutex> lock(m_mutex);
        const QByteArray wait = m_retryAfter.isEmpty() ? "" : "Retry-After: " + m_retryAfter + "\r\n";
        const QByteArray body = errorBody(request.service, "Too many requests");
        send(connection, head("503 Service Unavailable", "application/json", body.size(), wait) + body);
        break;
    }
    case Manner::ServerError: {
        const QByteArray body = errorBody(request.service, "Internal error");
        send(connection, head("500 Internal Server Error", "application/json", body.size()) + body);
        break;
    }
    case Manner::NotFound: {
        const QByteArray body = errorBody(request.service, "Not Found");
        send(connection, head("404 Not Found", "application/json", body.size()) + body);
        break;
    }
    case Manner::WrongJson:
        send(connection, head("200 OK", "application/json", half.size()) + half);
        break;
    case Manner::PlainRedirect:
        send(connection, redirect("http://192.0.2.1/elsewhere"));
        break;
    case Manner::EndlessRedirect:
        send(connection, redirect(address() + request.target));
        break;
    case Manner::EndlessBody:
        sendForEver(connection, endless + "\r\n", QByteArray(64 * 1024, ' '), 0);
        break;
    case Manner::EndlessHeaders:
        sendForEver(connection, endless, "X-More: " + QByteArray(1000, 'x') + "\r\n", 0);
        break;
    case Manner::Proper:
        break;
    }
}

void IdentifyServer::sendForEver(int connection, const QByteArray& head, const QByteArray& part,
                                 int pause) const
{
    bool open = send(connection, head);
    while (open && !m_stopping) {
        if (pause > 0 && isReady(connection, POLLIN))
            break; // the other side went away
        open = send(connection, part);
    }
}

bool IdentifyServer::send(int connection, const QByteArray& bytes) const
{
    int done = 0;
    while (done < bytes.size() && !m_stopping) {
        if (!isReady(connection, POLLOUT))
            continue;
        const ssize_t sent = ::send(connection, bytes.constData() + done, size_t(bytes.size() - done),
                                    MSG_NOSIGNAL | MSG_DONTWAIT);
        if (sent < 0 && errno != EAGAIN)
            return false;
        done += int(std::max<ssize_t>(sent, 0));
    }
    return done == bytes.size();
}
