#include "collection/parallelwork.h"

#include <QtTest>

#include <atomic>
#include <thread>
#include <vector>

class TestParallelWork : public QObject
{
    Q_OBJECT

private slots:
    void everyPieceIsDoneOnce_data();
    void everyPieceIsDoneOnce();
    void itEndsWhenTold();
};

void TestParallelWork::everyPieceIsDoneOnce_data()
{
    QTest::addColumn<int>("count");
    for (const int count : {0, 1, 2, 1000})
        QTest::addRow("%d", count) << count;
}

void TestParallelWork::everyPieceIsDoneOnce()
{
    QFETCH(int, count);
    std::vector<std::atomic<int>> done(std::size_t(count) + 1);
    int last = 0;
    QVERIFY(ParallelWork::run(
        count, [&done](int piece) { ++done[std::size_t(piece)]; },
        [&](int soFar) {
            const bool isInOrder = soFar >= last && soFar <= count;
            last = soFar;
            return isInOrder;
        }));
    for (int piece = 0; piece < count; ++piece)
        QCOMPARE(done[std::size_t(piece)].load(), 1);
    QCOMPARE(last, count);
}

void TestParallelWork::itEndsWhenTold()
{
    std::atomic<bool> isEnded{false};
    std::atomic<int> done{0};
    QVERIFY(!ParallelWork::run(
        1000,
        [&](int piece) {
            while (piece > 0 && !isEnded)
                std::this_thread::yield();
            ++done;
        },
        [&](int soFar) {
            isEnded = soFar > 0;
            return !isEnded;
        }));
    QVERIFY(done > 0 && done < 1000);
}

QTEST_GUILESS_MAIN(TestParallelWork)
#include "tst_parallelwork.moc"
