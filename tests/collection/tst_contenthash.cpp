#include "collection/contenthash.h"

#include <QRandomGenerator>
#include <QSet>
#include <QtTest>

class TestContentHash : public QObject
{
    Q_OBJECT

private slots:
    void piecesMakeNoDifference();
    void everyByteMakesOne();
    void soDoesTheirNumber();
    void everyRunHasHashesOfItsOwn();

private:
    std::string hashOf(const QByteArray& bytes, int piece = 1 << 20) const
    {
        ContentHash hash(m_secret);
        for (int at = 0; at < bytes.size(); at += piece)
            hash.add(bytes.constData() + at, std::size_t(qMin(piece, bytes.size() - at)));
        return hash.result();
    }
    static QByteArray someBytes(int count)
    {
        QRandomGenerator random(7);
        QByteArray bytes(count, '\0');
        for (char& byte : bytes)
            byte = char(random.bounded(256));
        return bytes;
    }

    const ContentHash::Secret m_secret = ContentHash::Secret::drawn();
};

void TestContentHash::piecesMakeNoDifference()
{
    const QByteArray bytes = someBytes(10000);
    const std::string hash = hashOf(bytes);
    QCOMPARE(hash.size(), std::size_t(32));
    for (const int piece : {1, 2, 6, 7, 8, 13, 4096, 9999})
        QCOMPARE(hashOf(bytes, piece), hash);
}

void TestContentHash::everyByteMakesOne()
{
    QByteArray bytes = someBytes(500);
    QSet<QByteArray> hashes = {QByteArray::fromStdString(hashOf(bytes))};
    for (char& byte : bytes) {
        for (const int bit : {0, 7}) {
            byte = char(byte ^ (1 << bit));
            hashes.insert(QByteArray::fromStdString(hashOf(bytes)));
            byte = char(byte ^ (1 << bit));
        }
    }
    QCOMPARE(hashes.size(), 1001);
}

void TestContentHash::soDoesTheirNumber()
{
    QSet<QByteArray> hashes;
    for (int count = 0; count < 40; ++count) {
        hashes.insert(QByteArray::fromStdString(hashOf(QByteArray(count, '\0'))));
        hashes.insert(QByteArray::fromStdString(hashOf(QByteArray(count, '\xFF'))));
    }
    QCOMPARE(hashes.size(), 79);
}

void TestContentHash::everyRunHasHashesOfItsOwn()
{
    ContentHash other(ContentHash::Secret::drawn());
    other.add("abc", 3);
    QVERIFY(other.result() != hashOf("abc"));
}

QTEST_GUILESS_MAIN(TestContentHash)
#include "tst_contenthash.moc"
