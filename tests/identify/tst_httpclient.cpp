#include "identify/address.h"
#include "identify/httpclient.h"
#include "identify/services.h"
#include "identifyserver.h"
#include "nameserver.h"

#include <QDateTime>
#include <QElapsedTimer>
#include <QLocale>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QtTest>

using audiocore::AddressKind;
using audiocore::Cancellation;
using audiocore::HttpAnswer;
using audiocore::HttpClient;
using Manner = IdentifyServer::Manner;
using Outcome = HttpAnswer::Outcome;
using namespace std::chrono_literals;

namespace {
constexpr std::size_t plenty = 10 * 1024 * 1024;

HttpAnswer get(const std::string& address, std::size_t largest = plenty,
               const HttpClient::Limits& limits = {})
{
    const Cancellation never;
    return HttpClient(limits).send({address, "", largest}, never);
}

std::string lookupOf(const IdentifyServer& server)
{
    return server.address().toStdString() + "/v2/lookup";
}
} // namespace

class TestHttpClient : public QObject
{
    Q_OBJECT

private slots:
    void addressesAreTrustedAsFarAsTheyGo_data();
    void addressesAreTrustedAsFarAsTheyGo();
    void redirectsLeadToHttpsOrStayHere();
    void textsArePercentEncoded();
    void anAnswerMayBeAsLongAsAllowed();
    void fiveRedirectsAreFollowed();
    void redirectsTakeTheirTurns();
    void waitingForATurnIsNoSlowness();
    void aSlowServerEndsInTime();
    void aSlowNameServerEndsInTime();
    void theWaitingTimeIsRead_data();
    void theWaitingTimeIsRead();
    void noProxyHearsOfThisMachine();
    void aCancelledRequestDoesNotStart();
    void certificatesAreVerified();
};

void TestHttpClient::addressesAreTrustedAsFarAsTheyGo_data()
{
    QTest::addColumn<QByteArray>("address");
    QTest::addColumn<int>("kind");
    const auto add = [](const char* address, AddressKind kind) {
        QTest::newRow(address) << QByteArray(address) << int(kind);
    };
    add("https://example.org/a?b", AddressKind::Https);
    add("HTTPS://example.org", AddressKind::Https);
    add("https://127.0.0.1:1234", AddressKind::Https);
    add("http://127.0.0.1:1234/a", AddressKind::LoopbackHttp);
    add("http://127.8.9.10", AddressKind::LoopbackHttp);
    add("http://127.255.0.255", AddressKind::LoopbackHttp);
    add("http://127.1", AddressKind::LoopbackHttp);
    add("http://0x7f.1", AddressKind::LoopbackHttp);
    add("http://127...", AddressKind::Refused);
    add("http://127.0.0.", AddressKind::Refused);
    add("http://127.0.0.999", AddressKind::Refused);
    add("http://127.0.0.256", AddressKind::Refused);
    add("http://127.0.0.1.1", AddressKind::Refused);
    add("http://localhost/", AddressKind::LoopbackHttp);
    add("http://[::1]:80/", AddressKind::LoopbackHttp);
    add("http://example.org", AddressKind::Refused);
    add("http://127.0.0.1.example.org", AddressKind::Refused);
    add("http://localhost.example.org", AddressKind::Refused);
    add("http://127.0.0.1@example.org/", AddressKind::Refused);
    add("http://0.0.0.0/", AddressKind::Refused);
    add("http://[::2]/", AddressKind::Refused);
    add("ftp://127.0.0.1/", AddressKind::Refused);
    add("file:///etc/passwd", AddressKind::Refused);
    add("example.org", AddressKind::Refused);
    add("https://", AddressKind::Refused);
    add("", AddressKind::Refused);
}

void TestHttpClient::addressesAreTrustedAsFarAsTheyGo()
{
    QFETCH(QByteArray, address);
    QFETCH(int, kind);
    QCOMPARE(int(audiocore::kindOf(address.toStdString())), kind);
}

void TestHttpClient::redirectsLeadToHttpsOrStayHere()
{
    using audiocore::mayRedirect;
    QVERIFY(mayRedirect(AddressKind::Https, AddressKind::Https));
    QVERIFY(mayRedirect(AddressKind::LoopbackHttp, AddressKind::Https));
    QVERIFY(mayRedirect(AddressKind::LoopbackHttp, AddressKind::LoopbackHttp));
    QVERIFY(!mayRedirect(AddressKind::Https, AddressKind::LoopbackHttp));
    QVERIFY(!mayRedirect(AddressKind::Https, AddressKind::Refused));
    QVERIFY(!mayRedirect(AddressKind::LoopbackHttp, AddressKind::Refused));
}

void TestHttpClient::textsArePercentEncoded()
{
    QCOMPARE(audiocore::percentEncoded("Az09-._~"), std::string("Az09-._~"));
    QCOMPARE(audiocore::percentEncoded(""), std::string());
    QCOMPARE(audiocore::percentEncoded(std::string("a\0b", 3)), std::string("a%00b"));
    QCOMPARE(audiocore::percentEncoded(std::string(1000000, '/')).size(), size_t(3000000));
    QCOMPARE(audiocore::percentEncoded("a b&c=d+\xC3\xA9%"), std::string("a%20b%26c%3Dd%2B%C3%A9%25"));
}

void TestHttpClient::anAnswerMayBeAsLongAsAllowed()
{
    IdentifyServer server;
    server.setAnswer(IdentifyServer::AcoustId, QByteArray(100000, 'x'));
    const HttpAnswer whole = get(lookupOf(server), 100000);
    QCOMPARE(int(whole.outcome), int(Outcome::Answered));
    QCOMPARE(whole.body.size(), size_t(100000));
    QCOMPARE(int(get(lookupOf(server), 99999).outcome), int(Outcome::Failed));
    // An announced length and an endless body are both cut short.
    server.setManner(IdentifyServer::AcoustId, Manner::EndlessBody);
    const HttpAnswer endless = get(lookupOf(server), 100000);
    QCOMPARE(int(endless.outcome), int(Outcome::Failed));
    QVERIFY(endless.body.size() <= 100000);
}

void TestHttpClient::fiveRedirectsAreFollowed()
{
    IdentifyServer server;
    server.setManner(IdentifyServer::AcoustId, Manner::EndlessRedirect, 5);
    QCOMPARE(int(get(lookupOf(server)).outcome), int(Outcome::Answered));
    QCOMPARE(server.requests().size(), 6);
    server.setManner(IdentifyServer::AcoustId, Manner::EndlessRedirect, 6);
    QCOMPARE(int(get(lookupOf(server)).outcome), int(Outcome::Failed));
    QCOMPARE(server.requests().size(), 12);
}

void TestHttpClient::redirectsTakeTheirTurns()
{
    IdentifyServer server;
    server.setManner(IdentifyServer::MusicBrainz, Manner::EndlessRedirect, 4);
    const Cancellation never;
    const HttpClient client;
    audiocore::RateLimit limit(50ms);
    const auto before = Cancellation::Clock::now();
    const audiocore::Service service(client, limit);
    QCOMPARE(service.ask({server.address().toStdString() + "/ws/2/recording/x", "", plenty}, never).code,
             200);
    const QList<IdentifyServer::Request> requests = server.requests();
    QCOMPARE(requests.size(), 5);
    for (int i = 0; i < requests.size(); ++i)
        QVERIFY(requests[i].time - before >= 50ms * i);
}

void TestHttpClient::waitingForATurnIsNoSlowness()
{
    IdentifyServer server;
    server.setManner(IdentifyServer::AcoustId, Manner::EndlessRedirect, 1);
    HttpClient::Limits limits;
    limits.inAll = 3s;
    const Cancellation cancellation;
    const auto turn = [&cancellation] { return cancellation.sleepUntil(Cancellation::Clock::now() + 2s); };
    const HttpAnswer answer = HttpClient(limits).send({lookupOf(server), "", plenty}, cancellation, turn);
    QCOMPARE(int(answer.outcome), int(Outcome::Answered));
    const auto cancelled = [] { return false; };
    QCOMPARE(int(HttpClient().send({lookupOf(server), "", plenty}, cancellation, cancelled).outcome),
             int(Outcome::Cancelled));
    QCOMPARE(server.requests().size(), 2);
}

void TestHttpClient::aSlowServerEndsInTime()
{
    IdentifyServer server;
    HttpClient::Limits limits;
    limits.inAll = 300ms;
    for (const Manner manner : {Manner::Silent, Manner::Trickling}) {
        server.setManner(IdentifyServer::AcoustId, manner);
        QElapsedTimer timer;
        timer.start();
        QCOMPARE(int(get(lookupOf(server), plenty, limits).outcome), int(Outcome::Failed));
        QVERIFY(timer.elapsed() >= 290);
        QVERIFY(timer.elapsed() < 20000); // and not in the thirty seconds of every day
    }
}

void TestHttpClient::aSlowNameServerEndsInTime()
{
    HttpClient::Limits limits;
    limits.connecting = 300ms;
    NameServer::hold();
    QElapsedTimer timer;
    timer.start();
    QCOMPARE(int(get("https://slow.melodrift.invalid/", plenty, limits).outcome), int(Outcome::Failed));
    QVERIFY(timer.elapsed() >= 290);
    QVERIFY(timer.elapsed() < 9000); // and not in the ten seconds of every day
    NameServer::release();
}

void TestHttpClient::theWaitingTimeIsRead_data()
{
    QTest::addColumn<QByteArray>("header");
    QTest::addColumn<int>("least");
    QTest::addColumn<int>("most");
    QTest::newRow("seconds") << QByteArray("7") << 7 << 7;
    QTest::newRow("none") << QByteArray("") << 0 << 0;
    QTest::newRow("nonsense") << QByteArray("soon") << 0 << 0;
    QTest::newRow("negative") << QByteArray("-5") << 0 << 0;
    const QDateTime later = QDateTime::currentDateTimeUtc().addSecs(3600);
    QTest::newRow("date") << QLocale::c().toString(later, "ddd, dd MMM yyyy hh:mm:ss 'GMT'").toLatin1()
                          << 3000 << 3600;
}

void TestHttpClient::theWaitingTimeIsRead()
{
    QFETCH(QByteArray, header);
    QFETCH(int, least);
    QFETCH(int, most);
    IdentifyServer server;
    server.setManner(IdentifyServer::AcoustId, Manner::SlowDown);
    server.setRetryAfter(header);
    const HttpAnswer answer = get(lookupOf(server));
    QCOMPARE(answer.code, 503);
    QVERIFY2(answer.retryAfter.count() >= least && answer.retryAfter.count() <= most,
             qPrintable(QString::number(answer.retryAfter.count())));
}

void TestHttpClient::noProxyHearsOfThisMachine()
{
    const IdentifyServer server;
    qputenv("http_proxy", "http://127.0.0.1:9");
    QCOMPARE(int(get(lookupOf(server)).outcome), int(Outcome::Answered));
    qunsetenv("http_proxy");
}

void TestHttpClient::aCancelledRequestDoesNotStart()
{
    const IdentifyServer server;
    Cancellation cancelled;
    cancelled.cancel();
    QCOMPARE(int(HttpClient().send({lookupOf(server), "", plenty}, cancelled).outcome),
             int(Outcome::Cancelled));
    QVERIFY(server.requests().isEmpty());
}

void TestHttpClient::certificatesAreVerified()
{
    // A server whose certificate nobody vouches for.
    const QTemporaryDir folder;
    const QString key = folder.filePath("key.pem");
    const QString certificate = folder.filePath("certificate.pem");
    QCOMPARE(QProcess::execute("openssl", {"req", "-x509", "-newkey", "ec", "-pkeyopt",
                                           "ec_paramgen_curve:P-256", "-nodes", "-subj", "/CN=localhost",
                                           "-addext", "subjectAltName=DNS:localhost,IP:127.0.0.1", "-keyout",
                                           key, "-out", certificate}),
             0);
    QProcess server;
    server.start("openssl",
                 {"s_server", "-accept", "127.0.0.1:0", "-www", "-key", key, "-cert", certificate});
    QByteArray said;
    while (!said.contains("ACCEPT") || !said.endsWith('\n')) {
        QVERIFY(server.waitForReadyRead(patience));
        said += server.readAllStandardOutput();
    }
    const QString port = QRegularExpression("ACCEPT 127\\.0\\.0\\.1:(\\d+)").match(said).captured(1);
    QVERIFY(!port.isEmpty());
    const HttpAnswer answer = get("https://127.0.0.1:" + port.toStdString() + "/");
    QCOMPARE(int(answer.outcome), int(Outcome::Failed));
    QVERIFY2(answer.error.find("certificate") != std::string::npos, answer.error.c_str());
    server.kill();
    server.waitForFinished(patience);
}

QTEST_GUILESS_MAIN(TestHttpClient)
#include "tst_httpclient.moc"
