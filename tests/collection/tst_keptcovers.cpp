#include "collection/keptcovers.h"
#include "filebytes.h"
#include "support/interposed.h"

#include <QDir>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

class TestKeptCovers : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void aCoverIsFoundByItsName();
    void anEqualCoverIsKeptOnce();
    void theOldestGoFirst();
    void oneThatIsKeptAgainIsTheNewest();
    void oneThatIsTooLargeIsNotKept();
    void whatWasDamagedIsNotFound();
    void aFullDiskIsTold();

private:
    KeptCovers covers(qint64 most = 1000) const { return {QFile::encodeName(path()).toStdString(), most}; }
    QString path() const { return m_folder->filePath("covers"); }
    QString fileOf(const QByteArray& cover) const
    {
        return path() + '/' + QString::fromStdString(KeptCovers::nameOf(cover));
    }
    int files() const { return QDir(path()).entryList(QDir::Files | QDir::Hidden).size(); }

    std::unique_ptr<QTemporaryDir> m_folder;
};

void TestKeptCovers::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
}

void TestKeptCovers::aCoverIsFoundByItsName()
{
    const QByteArray cover("\xff\xd8 a picture \0 of bytes", 22);
    QVERIFY(!covers().find(KeptCovers::nameOf(cover)));
    QCOMPARE(covers().keep(cover), QString());
    QCOMPARE(*covers().find(KeptCovers::nameOf(cover)), cover);
    QVERIFY(!covers().find(KeptCovers::nameOf("another")));
    QVERIFY(KeptCovers::nameOf(cover) != KeptCovers::nameOf("another"));
}

void TestKeptCovers::anEqualCoverIsKeptOnce()
{
    KeptCovers kept = covers(10);
    for (int i = 0; i < 5; ++i)
        QCOMPARE(kept.keep("a picture"), QString());
    QCOMPARE(covers(10).keep("a picture"), QString());
    QCOMPARE(files(), 1);
}

void TestKeptCovers::theOldestGoFirst()
{
    for (int run = 0; run < 2; ++run) {
        KeptCovers kept = covers(100);
        for (int i = 5 * run; i < 5 * run + 5; ++i)
            QCOMPARE(kept.keep(QByteArray(30, char('a' + i))), QString());
        QCOMPARE(files(), 3);
        for (int i = 0; i < 5 * run + 5; ++i)
            QCOMPARE(bool(kept.find(KeptCovers::nameOf(QByteArray(30, char('a' + i))))), i >= 5 * run + 2);
    }
    QCOMPARE(covers(100).keep(QByteArray(71, 'x')), QString()); // fits beside none
    QCOMPARE(files(), 1);
}

void TestKeptCovers::oneThatIsKeptAgainIsTheNewest()
{
    const QByteArray first(30, 'a');
    KeptCovers kept = covers(100);
    for (const char c : {'a', 'b', 'c'})
        QCOMPARE(kept.keep(QByteArray(30, c)), QString());
    QCOMPARE(kept.keep(first), QString());
    QCOMPARE(kept.keep(QByteArray(30, 'd')), QString());
    QVERIFY(kept.find(KeptCovers::nameOf(first)));
    QVERIFY(!kept.find(KeptCovers::nameOf(QByteArray(30, 'b'))));
    QCOMPARE(covers(100).keep(first), QString()); // in a run of its own
    KeptCovers later = covers(100);
    QCOMPARE(later.keep(QByteArray(60, 'e')), QString());
    QVERIFY(later.find(KeptCovers::nameOf(first)));
}

void TestKeptCovers::oneThatIsTooLargeIsNotKept()
{
    KeptCovers kept = covers(100);
    QCOMPARE(kept.keep(QByteArray(30, 'a')), QString());
    QCOMPARE(kept.keep(QByteArray(101, 'b')), QString("its cover is larger than what is kept"));
    QCOMPARE(files(), 1);
}

void TestKeptCovers::whatWasDamagedIsNotFound()
{
    QCOMPARE(covers().keep("a picture"), QString());
    Fixtures::saveBytes("a pictura", fileOf("a picture"));
    QVERIFY(!covers().find(KeptCovers::nameOf("a picture")));
    QCOMPARE(covers().keep("a picture"), QString());
    QVERIFY(covers().find(KeptCovers::nameOf("a picture")));
    QCOMPARE(files(), 1);
}

void TestKeptCovers::aFullDiskIsTold()
{
    const Interposed::Guard guard;
    Interposed::writeFails = [] { return true; };
    QVERIFY(!covers().keep("a picture").isEmpty());
    QCOMPARE(files(), 0);
}

QTEST_APPLESS_MAIN(TestKeptCovers)
#include "tst_keptcovers.moc"
