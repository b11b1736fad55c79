// The identifier as callers use it, by slot number, too.
#include "audiocore/iaudioidentifier.h"
#include "audiofile.h"
#include "base/text.h"
#include "fixtures.h"
#include "identifyserver.h"
#include "vtableslot.h"

#include <QTemporaryDir>
#include <QtTest>

#include <thread>

using Manner = IdentifyServer::Manner;

namespace {
QString textOf(const TagItem& item)
{
    return QString::fromUcs4(static_cast<const char32_t*>(item.data), item.size / 4);
}

std::u32string song()
{
    return Fixtures::tone("mp3", 20000).toStdU32String();
}
} // namespace

class TestIdentifier : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void operationsStandAtTheirSlots();
    void itemsComeInTheOrderOfTheirTypes();
    void whatTheNameSaysIsFoundAsWell();
    void absentItemsAreOfSizeZero();
    void nothingIsFoundBeforeIdentify();
    void closingDropsTheItems();
    void aPathThatIsNoTextIsNoFile();
    void aNameThatIsNoTextIsAFileAllTheSame();
    void howGoodTheMatchIsIsTold();
    void anIdentifierServesOneFileAfterTheOther();
    void noneIsDestroyedWithoutHarm();
    void twoWorkAtOnceAndShareThePace();
};

void TestIdentifier::init()
{
    AudioFile::takeLog();
}

void TestIdentifier::operationsStandAtTheirSlots()
{
    const IdentifyServer server;
    server.putIntoEnvironment();
    IAudioIdentifier* identifier = CreateIdentifier();
    const std::u32string path = song();
    slot<int (*)(void*, const char32_t*)>(identifier, 0)(identifier, path.c_str());
    QCOMPARE(slot<int (*)(void*, int, int, int)>(identifier, 4)(identifier, 1, 1, 3), 0);
    QCOMPARE(slot<int (*)(void*)>(identifier, 6)(identifier), int(IDENTIFY_FOUND));
    const TagItem title = slot<TagItem (*)(void*, int)>(identifier, 7)(identifier, 0);
    QCOMPARE(textOf(title), QString("Midnight Ferry"));
    slot<int (*)(void*)>(identifier, 3)(identifier);
    QCOMPARE(slot<int (*)(void*)>(identifier, 6)(identifier), int(IDENTIFY_NOT_RUN));
    slot<int (*)(void*, const char32_t*)>(identifier, 0)(identifier, path.c_str());
    slot<int (*)(void*)>(identifier, 5)(identifier);
    QVERIFY(slot<int (*)(void*, int, int, int)>(identifier, 4)(identifier, 1, 1, 3) != 0);
    QCOMPARE(slot<int (*)(void*)>(identifier, 6)(identifier), int(IDENTIFY_CANCELLED));
    DestroyIdentifier(identifier);
}

void TestIdentifier::itemsComeInTheOrderOfTheirTypes()
{
    const IdentifyServer server;
    server.putIntoEnvironment();
    IAudioIdentifier* identifier = CreateIdentifier();
    identifier->Open(song().c_str());
    QCOMPARE(identifier->Identify(1, 1, 3), 0);
    const QStringList texts = {
        "Midnight Ferry", "Ida Marlowe feat. The Salt Choir", "Paper Lanterns", "Pop", "2012", "4"};
    for (int type = 0; type < texts.size(); ++type) {
        const TagItem item = identifier->GetItem(type);
        QCOMPARE(item.type, type);
        QCOMPARE(item.dataKind, 0);
        QCOMPARE(textOf(item), texts[type]);
        QCOMPARE(static_cast<const char32_t*>(item.data)[item.size / 4], U'\0');
    }
    const TagItem picture = identifier->GetItem(TAG_PICTURE);
    QCOMPARE(picture.type, int(TAG_PICTURE));
    QVERIFY(picture.dataKind != 0);
    QCOMPARE(QByteArray(static_cast<const char*>(picture.data), picture.size), IdentifyServer::picture());
    for (const int none : {-1, 6, 7, 8, 10, 1000})
        QCOMPARE(identifier->GetItem(none).size, 0);
    DestroyIdentifier(identifier);
}

void TestIdentifier::whatTheNameSaysIsFoundAsWell()
{
    IdentifyServer server;
    server.setAnswer(IdentifyServer::AcoustId, IdentifyServer::emptyLookupAnswer());
    server.putIntoEnvironment();
    const QTemporaryDir folder;
    const QString path = Fixtures::copyTone("mp3", folder.path(), "Ida Marlowe - Midnight Ferry");
    IAudioIdentifier* identifier = CreateIdentifier();
    QVERIFY(IdentifiesBySound());
    identifier->Open(path.toStdU32String().c_str());
    QCOMPARE(identifier->Identify(1, 1, 3), 0);
    QCOMPARE(identifier->GetStatus(), 4);
    QCOMPARE(textOf(identifier->GetItem(TAG_ALBUM)), QString("Paper Lanterns"));
    DestroyIdentifier(identifier);
}

void TestIdentifier::absentItemsAreOfSizeZero()
{
    IdentifyServer server;
    server.setAnswer(IdentifyServer::MusicBrainz, R"({"title": "Alone"})");
    server.putIntoEnvironment();
    IAudioIdentifier* identifier = CreateIdentifier();
    identifier->Open(song().c_str());
    QCOMPARE(identifier->Identify(1, 1, 3), 0);
    QVERIFY(identifier->GetItem(TAG_TITLE).size > 0);
    for (int type = TAG_ARTIST; type <= TAG_PICTURE; ++type)
        QCOMPARE(identifier->GetItem(type).size, 0);
    DestroyIdentifier(identifier);
}

void TestIdentifier::nothingIsFoundBeforeIdentify()
{
    IAudioIdentifier* identifier = CreateIdentifier();
    QCOMPARE(identifier->GetStatus(), int(IDENTIFY_NOT_RUN));
    QCOMPARE(identifier->GetItem(0).size, 0);
    QVERIFY(identifier->Identify(1, 1, 3) != 0);
    QCOMPARE(identifier->GetStatus(), int(IDENTIFY_NO_FILE));
    DestroyIdentifier(identifier);
}

void TestIdentifier::closingDropsTheItems()
{
    const IdentifyServer server;
    server.putIntoEnvironment();
    IAudioIdentifier* identifier = CreateIdentifier();
    identifier->Open(song().c_str());
    QCOMPARE(identifier->Identify(1, 1, 3), 0);
    identifier->Close();
    for (int type = 0; type <= TAG_PICTURE; ++type)
        QCOMPARE(identifier->GetItem(type).size, 0);
    QVERIFY(identifier->Identify(1, 1, 3) != 0);
    QCOMPARE(identifier->GetStatus(), int(IDENTIFY_NO_FILE));
    DestroyIdentifier(identifier);
}

void TestIdentifier::aPathThatIsNoTextIsNoFile()
{
    IAudioIdentifier* identifier = CreateIdentifier();
    for (const char32_t* path : {U"", U"\x110000", static_cast<const char32_t*>(nullptr)}) {
        QVERIFY(identifier->Open(path) != 0);
        QVERIFY(identifier->Identify(1, 1, 3) != 0);
        QCOMPARE(identifier->GetStatus(), int(IDENTIFY_NO_FILE));
    }
    DestroyIdentifier(identifier);
}

void TestIdentifier::aNameThatIsNoTextIsAFileAllTheSame()
{
    IdentifyServer server;
    server.putIntoEnvironment();
    const QTemporaryDir folder;
    const QByteArray copy = QFile::encodeName(Fixtures::copyTone("mp3", folder.path(), "odd"));
    const QByteArray odd = QFile::encodeName(folder.path()) + "/Ida Marlowe - Midnight Ferry\xFF.mp3";
    QCOMPARE(std::rename(copy.constData(), odd.constData()), 0);
    IAudioIdentifier* identifier = CreateIdentifier();
    const std::u32string name = U"/Ida Marlowe - Midnight Ferry\xDCFF.mp3";
    QCOMPARE(identifier->Open((folder.path().toStdU32String() + name).c_str()), 0);
    QCOMPARE(identifier->Identify(1, 1, 3), 0);
    QCOMPARE(identifier->GetStatus(), int(IDENTIFY_FOUND));
    server.setAnswer(IdentifyServer::AcoustId, IdentifyServer::emptyLookupAnswer());
    QCOMPARE(identifier->Identify(1, 1, 3), 0);
    QCOMPARE(identifier->GetStatus(), int(IDENTIFY_FOUND_BY_TAGS));
    QVERIFY(
        base::isUtf8(QByteArray::fromPercentEncoding(server.requests(IdentifyServer::Search).last().target)
                         .toStdString()));
    DestroyIdentifier(identifier);
    QCOMPARE(std::remove(odd.constData()), 0);
}

void TestIdentifier::howGoodTheMatchIsIsTold()
{
    IdentifyServer server;
    server.putIntoEnvironment();
    const QTemporaryDir folder;
    const QString path = Fixtures::copyTone("mp3", folder.path(), "Ida Marlowe - Midnight Fery");
    IAudioIdentifier* identifier = CreateIdentifier();
    QCOMPARE(IdentificationScore(identifier), 0);
    identifier->Open(path.toStdU32String().c_str());
    QCOMPARE(identifier->Identify(1, 1, 3), 0);
    QCOMPARE(IdentificationScore(identifier), 98); // of the service
    server.setAnswer(IdentifyServer::AcoustId, IdentifyServer::emptyLookupAnswer());
    QCOMPARE(identifier->Identify(1, 1, 3), 0);
    QVERIFY(IdentificationScore(identifier) > 84 && IdentificationScore(identifier) < 100);
    identifier->Open(U"/no/such/song.mp3");
    QCOMPARE(IdentificationScore(identifier), 0);
    QVERIFY(identifier->Identify(1, 1, 3) != 0);
    QCOMPARE(IdentificationScore(identifier), 0);
    DestroyIdentifier(identifier);
}

void TestIdentifier::anIdentifierServesOneFileAfterTheOther()
{
    const IdentifyServer server;
    server.putIntoEnvironment();
    IAudioIdentifier* identifier = CreateIdentifier();
    identifier->Open(U"/no/such/song.mp3");
    QVERIFY(identifier->Identify(1, 1, 3) != 0);
    identifier->Close();
    identifier->Open(song().c_str());
    QCOMPARE(identifier->Identify(1, 1, 3), 0);
    QCOMPARE(textOf(identifier->GetItem(TAG_TITLE)), QString("Midnight Ferry"));
    DestroyIdentifier(identifier);
}

void TestIdentifier::noneIsDestroyedWithoutHarm()
{
    DestroyIdentifier(nullptr);
    DestroyIdentifier(CreateIdentifier());
}

void TestIdentifier::twoWorkAtOnceAndShareThePace()
{
    const IdentifyServer server;
    server.putIntoEnvironment();
    const auto identify = [] {
        IAudioIdentifier* identifier = CreateIdentifier();
        identifier->Open(song().c_str());
        const int result = identifier->Identify(1, 1, 3);
        DestroyIdentifier(identifier);
        return result;
    };
    const auto before = std::chrono::steady_clock::now();
    int results[2] = {1, 1};
    std::thread one([&] { results[0] = identify(); });
    std::thread other([&] { results[1] = identify(); });
    one.join();
    other.join();
    QCOMPARE(results[0], 0);
    QCOMPARE(results[1], 0);
    // The second one starts an interval after the first one, which starts after this test.
    const auto second = [&](IdentifyServer::Service service) {
        return server.requests(service).value(1).time - before;
    };
    QVERIFY(second(IdentifyServer::AcoustId) >= std::chrono::milliseconds(334));
    QVERIFY(second(IdentifyServer::MusicBrainz) >= std::chrono::milliseconds(1000));
}

QTEST_GUILESS_MAIN(TestIdentifier)
#include "tst_identifier.moc"
