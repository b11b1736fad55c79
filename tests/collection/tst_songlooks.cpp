#include "collection/songlooks.h"

#include <QtTest>

#include <atomic>
#include <string>
#include <thread>

namespace {
struct Listener final : public SongSearchListener
{
    void failed(int song, const std::string& reason) override
    {
        told.append(QString::number(song) + ' ' + QString::fromStdString(reason));
    }
    void cannotSearch(const std::string& reason) override { told.append(QString::fromStdString(reason)); }
    bool goesOn(int done, int of) override
    {
        ++asked;
        lastOf = of;
        return done < most;
    }

    QStringList told;
    int asked = 0;
    int lastOf = 0;
    int most = 1000;
};
} // namespace

class TestSongLooks : public QObject
{
    Q_OBJECT

private slots:
    void failuresAreToldInTheOrderOfTheSongs();
    void itsListenerEndsIt();
    void whoLooksEndsIt();
};

void TestSongLooks::failuresAreToldInTheOrderOfTheSongs()
{
    Listener listener;
    SongLooks looks(listener);
    std::atomic<int> sum{0};
    QVERIFY(looks.into({9, 4, 7, 5}, [&](int song) {
        sum += song;
        if (song != 7)
            looks.fail(song, "is odd");
    }));
    QCOMPARE(sum.load(), 25);
    QCOMPARE(listener.lastOf, 4);
    QCOMPARE(listener.told, QStringList());
    looks.tellFailures();
    QCOMPARE(listener.told, QStringList({"4 is odd", "5 is odd", "9 is odd"}));
}

void TestSongLooks::itsListenerEndsIt()
{
    Listener listener;
    listener.most = 1;
    SongLooks looks(listener);
    looks.into({0, 1, 2, 3, 4, 5}, [&looks](int song) {
        while (song > 0 && !looks.isEnded())
            std::this_thread::yield();
    });
    QVERIFY(looks.isEnded());
    const int asked = listener.asked;
    QVERIFY(!looks.goesOn(0, 1));
    QCOMPARE(listener.asked, asked);
}

void TestSongLooks::whoLooksEndsIt()
{
    Listener listener;
    SongLooks looks(listener);
    looks.into({0}, [&looks](int /*song*/) { looks.end(); });
    const int asked = listener.asked;
    QVERIFY(!looks.goesOn(0, 1));
    QCOMPARE(listener.asked, asked);
}

QTEST_GUILESS_MAIN(TestSongLooks)
#include "tst_songlooks.moc"
