// Where the services are looked for.
#include "identify/services.h"

#include <QtTest>

using audiocore::configuredAddresses;
using audiocore::ServiceAddresses;

class TestServiceAddresses : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void thePublicServicesAreAskedByHttps();
    void theEnvironmentNamesOthers();
    void emptyVariablesNameNothing();
};

void TestServiceAddresses::init()
{
    for (const char* name : {"MELODRIFT_ACOUSTID_URL", "MELODRIFT_MUSICBRAINZ_URL", "MELODRIFT_COVERART_URL",
                             "MELODRIFT_ACOUSTID_KEY"})
        qunsetenv(name);
    qputenv("XDG_CONFIG_HOME", "/nowhere"); // with a key of the user's
}

void TestServiceAddresses::thePublicServicesAreAskedByHttps()
{
    const ServiceAddresses addresses = configuredAddresses();
    QCOMPARE(addresses.acoustId, std::string("https://api.acoustid.org"));
    QCOMPARE(addresses.musicBrainz, std::string("https://musicbrainz.org"));
    QCOMPARE(addresses.coverArt, std::string("https://coverartarchive.org"));
    QCOMPARE(addresses.key, std::string(BUILT_IN_KEY));
}

void TestServiceAddresses::theEnvironmentNamesOthers()
{
    qputenv("MELODRIFT_ACOUSTID_URL", "http://127.0.0.1:1/");
    qputenv("MELODRIFT_MUSICBRAINZ_URL", "https://mirror.example/music//");
    qputenv("MELODRIFT_COVERART_URL", "https://covers.example");
    qputenv("MELODRIFT_ACOUSTID_KEY", "of the environment");
    const ServiceAddresses addresses = configuredAddresses();
    QCOMPARE(addresses.acoustId, std::string("http://127.0.0.1:1"));
    QCOMPARE(addresses.musicBrainz, std::string("https://mirror.example/music"));
    QCOMPARE(addresses.coverArt, std::string("https://covers.example"));
    QCOMPARE(addresses.key, std::string("of the environment"));
}

void TestServiceAddresses::emptyVariablesNameNothing()
{
    qputenv("MELODRIFT_ACOUSTID_URL", "");
    qputenv("MELODRIFT_ACOUSTID_KEY", "");
    QCOMPARE(configuredAddresses().acoustId, std::string("https://api.acoustid.org"));
    QCOMPARE(configuredAddresses().key, std::string(BUILT_IN_KEY));
}

QTEST_GUILESS_MAIN(TestServiceAddresses)
#include "tst_services.moc"
