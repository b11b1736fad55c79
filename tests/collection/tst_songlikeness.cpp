#include "collection/songlikeness.h"

#include <QtTest>

class TestSongLikeness : public QObject
{
    Q_OBJECT

private slots:
    void songsOfOneNameAreOne_data();
    void songsOfOneNameAreOne();
    void songsOfOtherNamesAreOthers_data();
    void songsOfOtherNamesAreOthers();
    void nothingIsLikeNothing();
};

void TestSongLikeness::songsOfOneNameAreOne_data()
{
    QTest::addColumn<QString>("artist");
    QTest::addColumn<QString>("title");
    QTest::newRow("the same") << "Zoé"
                              << "Halo";
    QTest::newRow("case") << "ZOÉ"
                          << "halo";
    QTest::newRow("accents") << "Zoe"
                             << "Hālo";
    QTest::newRow("width") << "Ｚｏｅ"
                           << "Ｈａｌｏ";
    QTest::newRow("blanks") << " Zoé"
                            << "Halo  ";
    QTest::newRow("round brackets") << "Zoé"
                                    << "Halo (Live)";
    QTest::newRow("other brackets") << "Zoé"
                                    << "[Demo] Halo {2004 (take 2)}";
    QTest::newRow("wide brackets") << "Zoé"
                                   << "Halo（Live）";
    QTest::newRow("guests of the title") << "Zoé"
                                         << "Halo feat. Somebody";
    QTest::newRow("guests in brackets") << "Zoé"
                                        << "Halo (ft. Somebody)";
    QTest::newRow("guests of the artist") << "Zoé feat Somebody & Others"
                                          << "Halo";
    QTest::newRow("more guests") << "Zoé Featuring Somebody"
                                 << "Halo Ft. Somebody [Live]";
}

void TestSongLikeness::songsOfOneNameAreOne()
{
    QFETCH(QString, artist);
    QFETCH(QString, title);
    QCOMPARE(SongLikeness::artistAndTitle(artist, title), SongLikeness::artistAndTitle("Zoé", "Halo"));
}

void TestSongLikeness::songsOfOtherNamesAreOthers_data()
{
    QTest::addColumn<QString>("artist");
    QTest::addColumn<QString>("title");
    QTest::newRow("another title") << "Zoé"
                                   << "Hallo";
    QTest::newRow("another artist") << "Zo"
                                    << "Halo";
    QTest::newRow("a word more") << "Zoé"
                                 << "Halo Live";
    QTest::newRow("the bounds of both") << "Zoé H"
                                        << "alo";
    QTest::newRow("a feat") << "Zoé"
                            << "Halo feat of Strength";
    QTest::newRow("an open bracket") << "Zoé"
                                     << "Halo (Live";
}

void TestSongLikeness::songsOfOtherNamesAreOthers()
{
    QFETCH(QString, artist);
    QFETCH(QString, title);
    QVERIFY(SongLikeness::artistAndTitle(artist, title) != SongLikeness::artistAndTitle("Zoé", "Halo"));
}

void TestSongLikeness::nothingIsLikeNothing()
{
    QVERIFY(SongLikeness::artistAndTitle("", "Halo").isEmpty());
    QVERIFY(SongLikeness::artistAndTitle("Zoé", "").isEmpty());
    QVERIFY(SongLikeness::artistAndTitle("Zoé", "  ").isEmpty());
    // A title that is nothing but a remark is one.
    QVERIFY(!SongLikeness::artistAndTitle("Zoé", "(Untitled)").isEmpty());
    QVERIFY(SongLikeness::artistAndTitle("Zoé", "(Untitled)") !=
            SongLikeness::artistAndTitle("Zoé", "(Intro)"));
}

QTEST_GUILESS_MAIN(TestSongLikeness)
#include "tst_songlikeness.moc"
