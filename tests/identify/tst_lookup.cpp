// AcoustID's answers: which recording is chosen, and that no answer does harm.
#include "identify/acoustid.h"
#include "identify/jsonreading.h"

#include <QtTest>

namespace acoustid = audiocore::acoustid;
namespace json = audiocore::json;

namespace {
const std::string one = "11111111-1111-4111-8111-111111111111";
const std::string two = "22222222-2222-4222-8222-222222222222";
const std::string three = "33333333-3333-4333-8333-333333333333";

QString chosen(const std::vector<acoustid::Candidate>& candidates, int milliseconds = 200000)
{
    const acoustid::Candidate* const best = acoustid::chooseRecording(candidates, milliseconds);
    return best ? QString::fromStdString(best->recording) : QString();
}

QString text(const std::string& id)
{
    return QString::fromStdString(id);
}
} // namespace

class TestLookup : public QObject
{
    Q_OBJECT

private slots:
    void theBestScoreWins();
    void theScoreMustBeAboveSixTenths();
    void theLengthMustLieWithinSevenSeconds();
    void ofEqualScoresTheOneWithMostSourcesWins();
    void theAnswersFormIsRead();
    void anErrorIsTold();
    void whatMakesNoSenseIsNotUnderstood_data();
    void whatMakesNoSenseIsNotUnderstood();
    void whatIsOfAnotherTypeIsPassedOver();
    void depthAndSizeAreBounded();
    void textsAreCleanedAndBounded();
};

void TestLookup::theBestScoreWins()
{
    QCOMPARE(chosen({{one, 0.7, 200, 100}, {two, 0.9, 200, 1}, {three, 0.8, 200, 50}}), text(two));
    QCOMPARE(chosen({}), QString());
}

void TestLookup::theScoreMustBeAboveSixTenths()
{
    QCOMPARE(chosen({{one, 0.6, 200, 100}}), QString());
    QCOMPARE(chosen({{one, 0.6001, 200, 100}}), text(one));
}

void TestLookup::theLengthMustLieWithinSevenSeconds()
{
    QCOMPARE(chosen({{one, 0.9, 207, 1}}), text(one));
    QCOMPARE(chosen({{one, 0.9, 193, 1}}), text(one));
    QCOMPARE(chosen({{one, 0.9, 207.1, 1}}), QString());
    QCOMPARE(chosen({{one, 0.9, 192.9, 1}}), QString());
    QCOMPARE(chosen({{one, 0.9, 190, 100}, {two, 0.7, 201, 1}}), text(two));
    // A recording whose length nobody knows may be anything.
    QCOMPARE(chosen({{one, 0.9, 0, 1}}, 3000), QString());
}

void TestLookup::ofEqualScoresTheOneWithMostSourcesWins()
{
    QCOMPARE(chosen({{one, 0.9, 200, 5}, {two, 0.9, 200, 40}, {three, 0.9, 200, 7}}), text(two));
    QCOMPARE(chosen({{one, 0.9, 200, 5}, {two, 0.9, 200, 5}}), text(one));
}

void TestLookup::theAnswersFormIsRead()
{
    const acoustid::Lookup lookup = acoustid::readLookup(R"({"status": "ok", "results": [
        {"id": "c97a7693-af5d-4d73-8334-e4588aec169a", "score": 0.95, "recordings": [
            {"id": "11111111-1111-4111-8111-111111111111", "title": "One", "duration": 200.5, "sources": 3,
             "artists": [{"id": "6d7b7cd4-254b-4c25-83f6-dd20f98ceacd", "name": "A"}]},
            {"id": "22222222-2222-4222-8222-222222222222", "sources": 1}]},
        {"id": "c8f5bfc0-3d4e-416d-857d-42d5d1c1e466", "score": 0.7}]})");
    QVERIFY(lookup.understood);
    QVERIFY(!lookup.refused);
    QVERIFY(lookup.error.empty());
    QCOMPARE(lookup.candidates.size(), size_t(2));
    QCOMPARE(text(lookup.candidates[0].recording), text(one));
    QCOMPARE(lookup.candidates[0].score, 0.95);
    QCOMPARE(lookup.candidates[0].seconds, 200.5);
    QCOMPARE(lookup.candidates[0].sources, 3.0);
    QCOMPARE(lookup.candidates[1].seconds, 0.0);
}

void TestLookup::anErrorIsTold()
{
    const acoustid::Lookup lookup =
        acoustid::readLookup(R"({"status": "error", "error": {"code": 4, "message": "invalid API key"}})");
    QVERIFY(lookup.understood);
    QVERIFY(lookup.refused);
    QCOMPARE(text(lookup.error), QString("invalid API key"));
    const acoustid::Lookup odd = acoustid::readLookup(R"({"status": "error", "error": {"message": [7]},
        "results": [{"score": 0.9, "recordings": [{"id": "11111111-1111-4111-8111-111111111111"}]}]})");
    QVERIFY(odd.refused);
    QVERIFY(odd.error.empty() && odd.candidates.empty());
}

void TestLookup::whatMakesNoSenseIsNotUnderstood_data()
{
    QTest::addColumn<QByteArray>("answer");
    for (const char* answer :
         {"", "null", "[]", "7", "\"ok\"", "{}", "<html></html>", "{\"status\": \"ok\"}",
          "{\"status\": \"ok\", \"results\": {}}", "{\"status\": 1, \"results\": []}",
          "{\"status\": \"ok\", \"results\": []", "{\"status\": \"ok\", \"results\": []} more",
          "{\"status\": \"\xFF\", \"results\": []}"})
        QTest::newRow(answer) << QByteArray(answer);
}

void TestLookup::whatMakesNoSenseIsNotUnderstood()
{
    QFETCH(QByteArray, answer);
    const acoustid::Lookup lookup = acoustid::readLookup(answer.toStdString());
    QVERIFY(!lookup.understood);
    QVERIFY(lookup.candidates.empty());
}

void TestLookup::whatIsOfAnotherTypeIsPassedOver()
{
    const acoustid::Lookup lookup = acoustid::readLookup(R"({"status": "ok", "results": [
        7, null, "text", [], {"score": "0.9", "recordings": [{"id": "11111111-1111-4111-8111-111111111111"}]},
        {"score": 0.9, "recordings": {"id": "11111111-1111-4111-8111-111111111111"}},
        {"score": 0.9, "recordings": [7, null, [], {"id": 7}, {"id": "../../etc/passwd"},
            {"id": "11111111-1111-4111-8111-11111111111/"},
            {"id": "22222222-2222-4222-8222-222222222222", "duration": "200", "sources": []}]}]})");
    QVERIFY(lookup.understood);
    QCOMPARE(lookup.candidates.size(), size_t(1));
    QCOMPARE(text(lookup.candidates[0].recording), text(two));
    QCOMPARE(lookup.candidates[0].seconds, 0.0);
    QCOMPARE(lookup.candidates[0].sources, 0.0);
}

void TestLookup::depthAndSizeAreBounded()
{
    const auto nested = [](int depth) {
        return std::string(size_t(depth), '[') + std::string(size_t(depth), ']');
    };
    QVERIFY(json::parse(nested(30)));
    QVERIFY(!json::parse(nested(100)));
    QVERIFY(!json::parse(std::string(10 * 1024 * 1024, '[')));
    std::string many = "[";
    for (int i = 0; i < 1000000; ++i)
        many += "[],";
    QVERIFY(!json::parse(many + "[]]"));
    QVERIFY(!json::parse("[1e999]") || !json::number(json::parse("[1e999]")->value()[0], "a"));
}

void TestLookup::textsAreCleanedAndBounded()
{
    const json::Value value = {{"blanks", "  two\nlines\t\u0007 "},
                               {"zero", std::string("a\0b", 3)},
                               {"long", "  " + std::string(5000, 'x')},
                               {"wide", std::string(500, ' ') + "\u00e9" + std::string(999, 'x') + "yz"},
                               {"controls", "a\u0085b\u2028c\u009b\u202Ed\u202C\u2066e\u2069\uFEFF"},
                               {"number", 7},
                               {"only", " \n "}};
    QCOMPARE(text(json::text(value, "blanks")), QString("two lines"));
    QCOMPARE(text(json::text(value, "zero")), QString("a b"));
    QCOMPARE(text(json::text(value, "long")), QString(1000, 'x'));
    QCOMPARE(text(json::text(value, "wide")), QString(QChar(0xE9)) + QString(999, 'x'));
    QCOMPARE(text(json::text(value, "controls")), QString("a b c de"));
    for (const char* none : {"number", "only", "missing"})
        QCOMPARE(text(json::text(value, none)), QString());
}

QTEST_GUILESS_MAIN(TestLookup)
#include "tst_lookup.moc"
