#include "collection/fingerprintindex.h"
#include "collection/soundgroups.h"

#include <QRandomGenerator>
#include <QtTest>

#include <algorithm>

using SoundGroups::Fingerprint;
using Groups = QVector<QVector<int>>;

class TestSoundGroups : public QObject
{
    Q_OBJECT

private slots:
    void init() { m_random = QRandomGenerator(5); }

    void fingerprintsAreAlikeOrNot_data();
    void fingerprintsAreAlikeOrNot();
    void theyHaveToOverlap();
    void noPartIsOtherMusic();
    void copiesAreFoundAmongOthers();
    void lengthsAreWithinSevenSeconds_data();
    void lengthsAreWithinSevenSeconds();
    void whatIsLikeOneOfAGroupIsInIt();
    void groupsAreInTheOrderOfSongs();
    void whoSaysNothingIsLikeNobody();
    void silenceIsLikeNobody();
    void everyFingerprintIsAskedForOnce();
    void whatAllSongsHaveTellsNothing();
    void aThousandCopiesAreOneGroup();
    void theIndexTellsTheLastOnes();

private:
    Fingerprint song(int values = 600);
    /// With so much of its bits changed.
    Fingerprint noisy(Fingerprint fingerprint, double share);
    static Groups find(const QVector<Fingerprint>& fingerprints, const QList<quint64>& durations);
    static Groups find(const QVector<Fingerprint>& fingerprints);

    QRandomGenerator m_random;
};

/// As that of music: from one value to the next some bits change.
Fingerprint TestSoundGroups::song(int values)
{
    Fingerprint made;
    quint32 value = m_random.generate();
    for (int i = 0; i < values; ++i) {
        value ^= m_random.generate() & m_random.generate();
        made.append(value);
    }
    return made;
}

Fingerprint TestSoundGroups::noisy(Fingerprint fingerprint, double share)
{
    for (quint32& value : fingerprint)
        for (int bit = 0; bit < 32; ++bit)
            if (m_random.generateDouble() < share)
                value ^= quint32(1) << bit;
    return fingerprint;
}

Groups TestSoundGroups::find(const QVector<Fingerprint>& fingerprints, const QList<quint64>& durations)
{
    return SoundGroups::find(durations, [&fingerprints](int song) { return fingerprints.at(song); });
}

Groups TestSoundGroups::find(const QVector<Fingerprint>& fingerprints)
{
    QList<quint64> durations;
    for (int i = 0; i < fingerprints.size(); ++i)
        durations.append(200000);
    return find(fingerprints, durations);
}

void TestSoundGroups::fingerprintsAreAlikeOrNot_data()
{
    QTest::addColumn<double>("share");
    QTest::addColumn<bool>("areAlike");
    QTest::newRow("the same") << 0.0 << true;
    QTest::newRow("in another format") << 0.03 << true;
    QTest::newRow("badly") << 0.08 << true;
    QTest::newRow("the same notes, played anew") << 0.13 << false;
    QTest::newRow("other music") << 0.5 << false;
}

void TestSoundGroups::fingerprintsAreAlikeOrNot()
{
    QFETCH(double, share);
    QFETCH(bool, areAlike);
    const Fingerprint one = song();
    const Fingerprint other = noisy(one, share);
    QCOMPARE(SoundGroups::areAlike(one, other, 0), areAlike);
    QCOMPARE(SoundGroups::areAlike(other, one, 0), areAlike);
    QCOMPARE(SoundGroups::areAlike(one, noisy(one.mid(20), share), 20), areAlike);
    QCOMPARE(SoundGroups::areAlike(noisy(one.mid(20), share), one, -20), areAlike);
    QVERIFY(!SoundGroups::areAlike(one, other, 1));
}

void TestSoundGroups::theyHaveToOverlap()
{
    const Fingerprint one = song(400);
    QVERIFY(SoundGroups::areAlike(one, one.mid(100), 100));
    QVERIFY(!SoundGroups::areAlike(one, one.mid(101), 101));
    QVERIFY(SoundGroups::areAlike(one, one.mid(0, 300), 0));
    QVERIFY(!SoundGroups::areAlike(one, one.mid(0, 299), 0));
    QVERIFY(!SoundGroups::areAlike(one, one, 1000));
    QVERIFY(!SoundGroups::areAlike(one, one, -1000));
    const Fingerprint shortOne = song(SoundGroups::fewestValues);
    QVERIFY(SoundGroups::areAlike(shortOne, shortOne, 0));
    QVERIFY(!SoundGroups::areAlike(shortOne.mid(1), shortOne.mid(1), 0));
    QVERIFY(!SoundGroups::areAlike({}, {}, 0));
}

/// As where a voice sets in over the same beginning.
void TestSoundGroups::noPartIsOtherMusic()
{
    const Fingerprint one = song(900);
    const Fingerprint other = one.mid(0, 704) + song(64) + one.mid(768);
    QVERIFY(!SoundGroups::areAlike(one, other, 0));
    QVERIFY(SoundGroups::areAlike(one, one.mid(0, 704) + noisy(one.mid(704, 64), 0.2) + one.mid(768), 0));
}

void TestSoundGroups::copiesAreFoundAmongOthers()
{
    QVector<Fingerprint> songs;
    Groups expected;
    for (int i = 0; i < 300; ++i) {
        songs.append(song());
        if (i % 10 != 0)
            continue;
        const Fingerprint original = songs.last();
        songs +=
            {noisy(original, 0.06), noisy(original.mid(m_random.bounded(40)), 0.04), noisy(original, 0.2)};
        expected.append({songs.size() - 4, songs.size() - 3, songs.size() - 2});
    }
    QCOMPARE(find(songs), expected);
}

void TestSoundGroups::lengthsAreWithinSevenSeconds_data()
{
    QTest::addColumn<quint64>("first");
    QTest::addColumn<quint64>("second");
    QTest::addColumn<bool>("areAlike");
    QTest::newRow("equal") << quint64(200000) << quint64(200000) << true;
    QTest::newRow("seven seconds") << quint64(200000) << quint64(207000) << true;
    QTest::newRow("more") << quint64(200000) << quint64(207001) << false;
    QTest::newRow("the longer one first") << quint64(14001) << quint64(7001) << true;
    QTest::newRow("and more") << quint64(14002) << quint64(7001) << false;
    QTest::newRow("a blink") << quint64(6999) << quint64(7000) << true;
    QTest::newRow("from the first second on") << quint64(6999) << quint64(13999) << true;
    QTest::newRow("twice seven and a blink") << quint64(6999) << quint64(14000) << false;
    QTest::newRow("far") << quint64(6999) << quint64(14000000) << false;
}

void TestSoundGroups::lengthsAreWithinSevenSeconds()
{
    QFETCH(quint64, first);
    QFETCH(quint64, second);
    QFETCH(bool, areAlike);
    const Fingerprint one = song(60);
    QCOMPARE(find({one, one}, {first, second}).size(), areAlike ? 1 : 0);
}

void TestSoundGroups::whatIsLikeOneOfAGroupIsInIt()
{
    const Fingerprint one = song();
    QCOMPARE(find({one, song(), one, one}, {214000, 200000, 200000, 207000}), (Groups{{0, 2, 3}}));
}

void TestSoundGroups::groupsAreInTheOrderOfSongs()
{
    const Fingerprint a = song();
    const Fingerprint b = song();
    QCOMPARE(find({a, b, b, a, song()}, {300000, 200000, 100000, 299000, 1}), (Groups{{0, 3}}));
    QCOMPARE(find({a, b, b, a, a}, {300000, 200000, 200001, 299000, 298000}), (Groups{{0, 3, 4}, {1, 2}}));
}

void TestSoundGroups::whoSaysNothingIsLikeNobody()
{
    const Fingerprint a = song();
    QCOMPARE(find({{}, {}, song(3), song(3)}), Groups());
    QCOMPARE(find({a, a}, {0, 0}), Groups());
    QCOMPARE(find({}), Groups());
}

void TestSoundGroups::silenceIsLikeNobody()
{
    const Fingerprint silence(600, 627964279);
    QCOMPARE(find({song(), silence, song(), silence}), Groups()); // what follows may be anything
    Fingerprint click = silence;
    click[300] = 1;
    QCOMPARE(find({click, click}), Groups({{0, 1}}));
}

void TestSoundGroups::everyFingerprintIsAskedForOnce()
{
    const Fingerprint one = song();
    QVector<int> asked;
    SoundGroups::find({200000, 0, 100000, 200000}, [&](int song) {
        asked.append(song);
        return one;
    });
    std::sort(asked.begin(), asked.end());
    QCOMPARE(asked, (QVector<int>{0, 2, 3}));
}

/// Silence at the beginning, or a jingle.
void TestSoundGroups::whatAllSongsHaveTellsNothing()
{
    const Fingerprint jingle = song(40);
    QVector<Fingerprint> songs;
    for (int i = 0; i < 400; ++i)
        songs.append(jingle + song(400));
    songs.append(noisy(songs.at(7), 0.05));
    QCOMPARE(find(songs), (Groups{{7, 400}}));
}

void TestSoundGroups::aThousandCopiesAreOneGroup()
{
    const Fingerprint one = song(100);
    QVector<Fingerprint> songs;
    for (int i = 0; i < 1000; ++i)
        songs.append(noisy(one, 0.02));
    const Groups groups = find(songs);
    QCOMPARE(groups.size(), 1);
    QCOMPARE(groups.first().size(), 1000);
}

void TestSoundGroups::theIndexTellsTheLastOnes()
{
    FingerprintIndex index;
    const auto told = [&index](quint32 value) {
        QVector<int> told;
        index.find(value, [&told](int song, int position) { told += {song, position}; });
        return told;
    };
    QCOMPARE(told(5), QVector<int>());
    index.add(0, {7, 5, 5, 7, 9});
    QCOMPARE(told(5), (QVector<int>{0, 1}));
    QCOMPARE(told(6), QVector<int>());
    for (int song = 1; song <= 5000; ++song) // so that it grows
        index.add(song, {5, quint32(song) + 100});
    QCOMPARE(told(5).size(), 2 * FingerprintIndex::mostOfAValue);
    QCOMPARE(told(5).mid(0, 4), (QVector<int>{5000, 0, 4999, 0}));
    QCOMPARE(told(2100), (QVector<int>{2000, 1}));
    QCOMPARE(told(9), (QVector<int>{0, 4}));
    index.clear();
    QCOMPARE(told(5), QVector<int>());
}

QTEST_APPLESS_MAIN(TestSoundGroups)
#include "tst_soundgroups.moc"
