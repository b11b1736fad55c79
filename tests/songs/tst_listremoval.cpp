#include "audiocore/iaudiotag.h"
#include "dupmusicinfo.h"
#include "qmusicinfo.h"
#include "removalfixture.h"
#include "songs/songremoval.h"

#include <QtTest>

#include <random>

/// How removed songs leave the lists.
class TestListRemoval : public RemovalFixture
{
    Q_OBJECT

private slots:
    void initTestCase() { start(); }
    void init() { prepare(); }

    void theLastEntryOfTheGroupGoes();
    void aGroupOfOneLeavesTheList();
    void aSongOutOfTheListCostsNoFile();
    void aGroupOutOfRangeIsLeftAlone();
    void theTagListStaysParallel();
    void everyGroupKeepsItsFirstSong();
    void smallGroupsAreTakenOutUntouched();
    void allAtOnceIsTheSameAsOneAfterTheOther();
    void songsGoBackToTheirPlaces();
    void aGreatDeletionGoesBackAtOnce();
};

void TestListRemoval::theLastEntryOfTheGroupGoes()
{
    QMusicInfo* a = song("a");
    QMusicInfo* b = song("b");
    QMusicInfo* c = song("c");
    const DupMusicInfo* three = group({a, b, c});
    SongRemoval::removeOne(lists(), a, 0, KeptFiles(), *m_removal);
    QCOMPARE(three->musicList, QList<QMusicInfo*>({a, b})); // oddity 25: not the deleted one
    QCOMPARE(m_all, QList<QMusicInfo*>({b, c}));
    QVERIFY(!QFile::exists(fileOf(a)));
    QVERIFY(QFile::exists(fileOf(b)) && QFile::exists(fileOf(c)));
}

void TestListRemoval::aGroupOfOneLeavesTheList()
{
    QMusicInfo* a = song("a");
    QMusicInfo* b = song("b");
    const DupMusicInfo* two = group({a, b});
    const DupMusicInfo* other = group({song("c"), song("d"), song("e")});
    m_undefined = {b, a};
    SongRemoval::removeOne(lists(), b, 0, KeptFiles(), *m_removal);
    QCOMPARE(two->musicList, QList<QMusicInfo*>({a}));
    QCOMPARE(m_groups.size(), 1);
    QCOMPARE(m_groups.first(), other);
    QCOMPARE(other->musicList.size(), 3);
    QCOMPARE(m_undefined, QList<QMusicInfo*>({a}));
}

void TestListRemoval::aSongOutOfTheListCostsNoFile()
{
    QMusicInfo* a = song("a");
    QMusicInfo* b = song("b");
    group({a, b});
    m_all.removeOne(b);
    m_tags.removeLast();
    QVERIFY(!SongRemoval::removeOne(lists(), b, 0, KeptFiles(), *m_removal));
    QVERIFY(QFile::exists(fileOf(b)));
    QVERIFY(m_groups.isEmpty());
}

void TestListRemoval::aGroupOutOfRangeIsLeftAlone()
{
    QMusicInfo* a = song("a");
    const DupMusicInfo* two = group({song("b"), song("c")});
    for (const qint64 current : {qint64(1), qint64(-1), qint64(1) << 40}) {
        SongRemoval::removeOne(lists(), a, current, KeptFiles(), *m_removal);
        QCOMPARE(two->musicList.size(), 2);
    }
    group({});
    SongRemoval::removeOne(lists(), a, 1, KeptFiles(), *m_removal); // an empty group has no last entry
    QCOMPARE(m_groups.size(), 2);
}

void TestListRemoval::theTagListStaysParallel()
{
    QMusicInfo* a = song("a");
    QMusicInfo* b = song("b");
    song("c");
    for (IAudioTag*& tag : m_tags)
        tag = CreateTag();
    const QList<IAudioTag*> tags = m_tags;
    tags.at(1)->Open(fileOf(b).toStdU32String().c_str());
    SongRemoval::removeOne(lists(), b, 0, KeptFiles(), *m_removal);
    QCOMPARE(m_tags, QList<IAudioTag*>({tags.at(0), tags.at(2)}));
    group({m_all.at(1), a});
    SongRemoval::removeAll(lists(), SongRemoval::planOfAll(m_groups));
    QCOMPARE(m_tags, QList<IAudioTag*>({tags.at(2)}));
    for (IAudioTag* tag : tags)
        ::operator delete(tag);
}

void TestListRemoval::everyGroupKeepsItsFirstSong()
{
    QList<QMusicInfo*> firsts;
    QList<DupMusicInfo*> groups;
    for (int size = 2; size <= 5; ++size) {
        QList<QMusicInfo*> songs;
        for (int i = 0; i < size; ++i)
            songs.append(song(QString("%1-%2").arg(size).arg(i)));
        firsts.append(songs.first());
        groups.append(group(songs));
    }
    m_undefined = m_all;
    const QVector<SongRemoval::Removal> plan = SongRemoval::planOfAll(m_groups);
    QCOMPARE(plan.size(), 1 + 2 + 3 + 4);
    QCOMPARE(plan.at(1).song, groups.at(1)->musicList.at(2)); // from the last one on
    QCOMPARE(plan.at(2).song, groups.at(1)->musicList.at(1));
    QCOMPARE(plan.at(1).kept, firsts.at(1));
    const QVector<RemovedSong> removed = SongRemoval::removeAll(lists(), plan);
    QCOMPARE(removed.size(), plan.size());
    QVERIFY(m_groups.isEmpty());
    QCOMPARE(m_all, firsts);
    QCOMPARE(m_undefined, firsts);
    for (const DupMusicInfo* one : groups)
        QCOMPARE(one->musicList.size(), 1);
}

void TestListRemoval::smallGroupsAreTakenOutUntouched()
{
    QMusicInfo* a = song("a");
    const DupMusicInfo* one = group({a});
    const DupMusicInfo* none = group({});
    const QVector<SongRemoval::Removal> plan = SongRemoval::planOfAll(m_groups);
    QVERIFY(plan.isEmpty());
    QVERIFY(SongRemoval::removeAll(lists(), plan).isEmpty());
    QVERIFY(m_groups.isEmpty());
    QCOMPARE(one->musicList, QList<QMusicInfo*>({a}));
    QVERIFY(none->musicList.isEmpty());
    QCOMPARE(m_all, QList<QMusicInfo*>({a}));
}

/// The slow way, song by song, ends in the same lists.
void TestListRemoval::allAtOnceIsTheSameAsOneAfterTheOther()
{
    std::mt19937 random(5);
    for (int round = 0; round < 50; ++round) {
        init();
        for (int i = 0; i < 40; ++i)
            song(QString::number(i));
        QList<QMusicInfo*> free = m_all;
        while (free.size() > 4) {
            QList<QMusicInfo*> members;
            for (unsigned size = 2 + random() % 4; size > 0 && !free.isEmpty(); --size)
                members.append(free.takeAt(int(random() % unsigned(free.size()))));
            if (members.size() > 1)
                group(members);
        }
        for (QMusicInfo* some : qAsConst(m_all))
            if (random() % 3 == 0)
                m_undefined.append(some);

        QList<QMusicInfo*> all = m_all;
        QList<QMusicInfo*> undefined = m_undefined;
        QList<QList<QMusicInfo*>> groups;
        for (const DupMusicInfo* one : qAsConst(m_groups))
            groups.append(one->musicList);
        while (!groups.isEmpty()) {
            QMusicInfo* last = groups.first().takeLast();
            all.removeOne(last);
            undefined.removeOne(last);
            if (groups.first().size() == 1)
                groups.removeFirst();
        }
        SongRemoval::removeAll(lists(), SongRemoval::planOfAll(m_groups));
        QCOMPARE(m_all, all);
        QCOMPARE(m_undefined, undefined);
        QVERIFY(m_groups.isEmpty());
    }
}

void TestListRemoval::songsGoBackToTheirPlaces()
{
    std::mt19937 random(7);
    for (int round = 0; round < 50; ++round) {
        init();
        for (int i = 0; i < 30; ++i)
            song(QString::number(i));
        for (IAudioTag*& tag : m_tags)
            tag = CreateTag();
        const QList<QMusicInfo*> all = m_all;
        const QList<IAudioTag*> tags = m_tags;
        QVector<RemovedSong> removed;
        while (m_all.size() > 20) { // in whatever order
            QMusicInfo* const next = m_all.at(int(random() % unsigned(m_all.size())));
            removed.append(*SongRemoval::removeOne(lists(), next, -1, KeptFiles(), *m_removal));
        }
        for (int i = 0; i + 1 < m_all.size(); i += 3)
            group({m_all.at(i), m_all.at(i + 1)});
        removed += SongRemoval::removeAll(lists(), SongRemoval::planOfAll(m_groups));
        QCOMPARE(m_all.size(), 13);
        QMusicInfo* const later = song("later");
        QSet<QMusicInfo*> away;
        QList<QMusicInfo*> back = all;
        if (round % 2 == 1) {
            away = {removed.at(3).song, removed.last().song};
            back.removeOne(removed.at(3).song);
            back.removeOne(removed.last().song);
        }
        SongRemoval::putBack(lists(), removed, away);
        QCOMPARE(m_all, back + QList<QMusicInfo*>{later});
        QCOMPARE(m_tags.size(), m_all.size());
        for (int i = 0; i < back.size(); ++i)
            QCOMPARE(m_tags.at(i), tags.at(all.indexOf(back.at(i))));
        for (IAudioTag* tag : tags)
            ::operator delete(tag);
    }
}

/// By the thousand: not one after the other.
void TestListRemoval::aGreatDeletionGoesBackAtOnce()
{
    const Fixtures::ModeGuard tracks(false);
    constexpr int count = 60000;
    std::vector<QMusicInfo> songs(count);
    for (QMusicInfo& one : songs)
        m_all.append(&one);
    const QList<QMusicInfo*> all = m_all;
    QList<QMusicInfo*> members = m_all;
    group(members);
    const QVector<RemovedSong> removed = SongRemoval::removeAll(lists(), SongRemoval::planOfAll(m_groups));
    QCOMPARE(removed.size(), count - 1);
    SongRemoval::putBack(lists(), removed, {});
    QCOMPARE(m_all, all);
    QVERIFY(m_tags.isEmpty()); // tracks have none
    m_all.clear();
}

QTEST_MAIN(TestListRemoval)
#include "tst_listremoval.moc"
