#include "collection/cleaningplan.h"
#include "filebytes.h"

#include <QDir>
#include <QTemporaryDir>
#include <QtTest>

#include <algorithm>
#include <cstdio>
#include <memory>

#include <unistd.h>

using Fate = CleaningPlan::Fate;

class TestCleaningPlan : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void allButOneOfAGroupGo();
    void rulesChooseOneAfterTheOther_data();
    void rulesChooseOneAfterTheOther();
    void whatIsGoneIsNotKept();
    void aKeptFileStaysByWhateverPath_data();
    void aKeptFileStaysByWhateverPath();
    void aLinkToAKeptFileGoesAndFreesNothing_data();
    void aLinkToAKeptFileGoesAndFreesNothing();
    void whatOneGroupKeepsNoOtherTakes();
    void aFileGoesOnce();
    void aFileIsFreeOnceItsLastNameGoes();
    void everythingGoesInOrder();
    void nothingGoesForACopyThatIsNotThereAnyMore_data();
    void nothingGoesForACopyThatIsNotThereAnyMore();
    void whatBecameTheKeptFileStays();
    void itCanBeEnded();
    void namesAreAnyBytes();

private:
    std::string at(const QByteArray& name) const
    {
        return (QFile::encodeName(m_folder->path()) + '/' + name).toStdString();
    }
    SongCopy copy(const QByteArray& name) const { return {at(name), FileState::ofEntry(at(name)), {}}; }
    /// Of so many bytes.
    SongCopy write(const QByteArray& name, int size = 10) const;
    static QVector<KeepRule> rules(const std::vector<std::string>& names);
    /// For each copy of the only group: "K reason", "G bytes" or "S reason".
    static QStringList told(const CleaningPlan& plan);
    /// Has it carried out by removing files; the paths' names as they went, and failures.
    QStringList carriedOut(const CleaningPlan& plan, int most = 1000) const;

    std::unique_ptr<QTemporaryDir> m_folder;
};

void TestCleaningPlan::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    QVERIFY(QDir(m_folder->path()).mkpath("f"));
}

SongCopy TestCleaningPlan::write(const QByteArray& name, int size) const
{
    std::FILE* const file = std::fopen(at(name).c_str(), "wb");
    if (!file ||
        std::fwrite(QByteArray(size, 'x').constData(), 1, std::size_t(size), file) != std::size_t(size))
        qFatal("cannot write %s", name.constData());
    std::fclose(file);
    return copy(name);
}

QVector<KeepRule> TestCleaningPlan::rules(const std::vector<std::string>& names)
{
    QVector<KeepRule> found;
    QString problem;
    for (const std::string& name : names)
        found.append(*KeepRule::named(name, problem));
    return found;
}

QStringList TestCleaningPlan::told(const CleaningPlan& plan)
{
    QStringList told;
    for (const CleaningPlan::Group& group : plan.groups())
        for (const CleaningPlan::Decision& decision : group)
            told.append(decision.fate == Fate::Goes
                            ? "G " + QString::number(decision.freed)
                            : (decision.fate == Fate::Kept ? "K " : "S ") + decision.reason);
    return told;
}

QStringList TestCleaningPlan::carriedOut(const CleaningPlan& plan, int most) const
{
    QStringList told;
    const bool done = plan.carryOut(
        [](const std::string& path, const FileState& state) { return removeIfUnchanged(path, state); },
        [&told, this](const CleaningPlan::Decision& decision, const QString& failure) {
            const QString name = QString::fromStdString(decision.copy.path).mid(m_folder->path().size() + 1);
            told.append(failure.isEmpty() ? name : name + ": " + failure);
        },
        [most](int done) { return done < most; });
    if (!done)
        told.append("ended");
    return told;
}

void TestCleaningPlan::allButOneOfAGroupGo()
{
    const SongCopy a = write("a", 1);
    const SongCopy b = write("b", 20);
    const SongCopy c = write("c", 300);
    const CleaningPlan plan({{a, b, c}, {write("d", 5), write("e", 4000)}, {write("alone")}, {}},
                            rules({"largest"}));
    QCOMPARE(told(plan), (QStringList{"G 1", "G 20", "K is the largest", "G 5", "K is the largest",
                                      "K is the only one"}));
    QCOMPARE(plan.going(), 3);
    QCOMPARE(plan.bytesFreed(), 26);
    QCOMPARE(plan.groups().at(0).at(1).copy.path, b.path);
}

void TestCleaningPlan::rulesChooseOneAfterTheOther_data()
{
    QTest::addColumn<QStringList>("names");
    QTest::addColumn<int>("kept");
    QTest::addColumn<QString>("reason");
    QTest::newRow("none") << QStringList{} << 0 << "is the first of several alike";
    QTest::newRow("one that does not decide") << QStringList{"best"} << 0 << "is the first of several alike";
    QTest::newRow("one that leaves two") << QStringList{"largest"} << 1 << "is the largest";
    QTest::newRow("and the next") << QStringList{"largest", "shortest-path"} << 2 << "has the shortest path";
    QTest::newRow("the other way round")
        << QStringList{"shortest-path", "largest"} << 3 << "has the shortest path";
    QTest::newRow("after one that decides nothing")
        << QStringList{"best", "largest", "first"} << 1 << "is the first";
}

void TestCleaningPlan::rulesChooseOneAfterTheOther()
{
    QFETCH(QStringList, names);
    QFETCH(int, kept);
    QFETCH(QString, reason);
    std::vector<std::string> inOrder;
    for (const QString& name : names)
        inOrder.push_back(name.toStdString());
    const CleaningPlan plan({{write("aaa", 1), write("bbb", 9), write("cc", 9), write("d", 1)}},
                            rules(inOrder));
    for (int i = 0; i < 4; ++i)
        QCOMPARE(plan.groups().at(0).at(i).fate, i == kept ? Fate::Kept : Fate::Goes);
    QCOMPARE(plan.groups().at(0).at(kept).reason, reason);
}

void TestCleaningPlan::whatIsGoneIsNotKept()
{
    QCOMPARE(told(CleaningPlan({{copy("gone"), write("a"), write("b")}}, {})),
             (QStringList{"S the file is gone", "K is the first of several alike", "G 10"}));
    QCOMPARE(told(CleaningPlan({{copy("gone"), write("a")}}, rules({"first"}))),
             (QStringList{"S the file is gone", "K is the only one"}));
    QCOMPARE(told(CleaningPlan({{copy("gone"), copy("gone2")}}, {})),
             (QStringList{"S the file is gone", "S the file is gone"}));
    QVERIFY(QFile::link("nowhere", QString::fromStdString(at("link"))));
    QCOMPARE(told(CleaningPlan({{copy("link"), write("a")}}, rules({"first"}))),
             (QStringList{"S the file is gone", "K is the only one"}));
}

void TestCleaningPlan::aKeptFileStaysByWhateverPath_data()
{
    QTest::addColumn<QByteArray>("kept");
    QTest::addColumn<QByteArray>("other");
    QTest::newRow("named twice") << QByteArray("f/a.mp3") << QByteArray("f/a.mp3");
    QTest::newRow("spelt in another way") << QByteArray("f/a.mp3") << QByteArray("f/../f//a.mp3");
    QTest::newRow("through a linked folder") << QByteArray("f/a.mp3") << QByteArray("folder/a.mp3");
    QTest::newRow("what a kept link leads to") << QByteArray("link.mp3") << QByteArray("f/a.mp3");
    QTest::newRow("a link on the way of a kept one") << QByteArray("link2.mp3") << QByteArray("link.mp3");
}

void TestCleaningPlan::aKeptFileStaysByWhateverPath()
{
    QFETCH(QByteArray, kept);
    QFETCH(QByteArray, other);
    write("f/a.mp3");
    QCOMPARE(::symlink("f", at("folder").c_str()), 0);
    QCOMPARE(::symlink("f/a.mp3", at("link.mp3").c_str()), 0);
    QCOMPARE(::symlink("link.mp3", at("link2.mp3").c_str()), 0);
    const CleaningPlan plan({{copy(kept), copy(other)}}, rules({"first"}));
    QCOMPARE(told(plan), (QStringList{"K is the first", "S a song that is kept has the same file"}));
    QCOMPARE(plan.going(), 0);
}

void TestCleaningPlan::aLinkToAKeptFileGoesAndFreesNothing_data()
{
    QTest::addColumn<bool>("isSymbolic");
    QTest::newRow("symbolic") << true;
    QTest::newRow("hard") << false;
}

void TestCleaningPlan::aLinkToAKeptFileGoesAndFreesNothing()
{
    QFETCH(bool, isSymbolic);
    write("a");
    QCOMPARE(isSymbolic ? ::symlink("a", at("link").c_str()) : ::link(at("a").c_str(), at("link").c_str()),
             0);
    const CleaningPlan plan({{copy("a"), copy("link")}}, rules({"first"}));
    QCOMPARE(told(plan), (QStringList{"K is the first", "G 0"}));
    QCOMPARE(carriedOut(plan), QStringList{"link"});
    QCOMPARE(FileState::of(at("a")), plan.groups().at(0).at(0).copy.state);
}

void TestCleaningPlan::whatOneGroupKeepsNoOtherTakes()
{
    const SongCopy a = write("a");
    const SongCopy b = write("b");
    QCOMPARE(told(CleaningPlan({{a, b}, {b, a}}, rules({"first"}))),
             (QStringList{"K is the first", "S a song that is kept has the same file", "K is the first",
                          "S a song that is kept has the same file"}));
}

void TestCleaningPlan::aFileGoesOnce()
{
    const SongCopy a = write("f/a");
    const SongCopy b = write("f/b");
    QCOMPARE(::symlink("f", at("folder").c_str()), 0);
    const CleaningPlan plan({{a, b, copy("folder/b"), b}}, rules({"first"}));
    const QString twice = "S it is a file that goes already, by another path";
    QCOMPARE(told(plan), (QStringList{"K is the first", "G 10", twice, twice}));
    QCOMPARE(carriedOut(plan), QStringList{"f/b"});
}

void TestCleaningPlan::aFileIsFreeOnceItsLastNameGoes()
{
    write("b");
    QCOMPARE(::link(at("b").c_str(), at("c").c_str()), 0);
    const SongCopy a = write("a");
    QCOMPARE(told(CleaningPlan({{a, copy("b"), copy("c")}}, rules({"first"}))),
             (QStringList{"K is the first", "G 0", "G 10"}));
    QCOMPARE(::link(at("b").c_str(), at("elsewhere").c_str()), 0);
    QCOMPARE(CleaningPlan({{a, copy("b"), copy("c")}}, rules({"first"})).bytesFreed(), 0);
}

void TestCleaningPlan::everythingGoesInOrder()
{
    const QVector<QVector<SongCopy>> groups = {{write("d"), write("c"), write("b")},
                                               {write("a"), write("f/x"), write("e")}};
    write("b", 20);
    const CleaningPlan plan(groups, rules({"first"}));
    QCOMPARE(carriedOut(plan),
             (QStringList{"c", "b: it is not the file that was listed any more", "f/x", "e"}));
    QCOMPARE(QDir(m_folder->path()).entryList(QDir::Files), (QStringList{"a", "b", "d"}));
}

void TestCleaningPlan::nothingGoesForACopyThatIsNotThereAnyMore_data()
{
    QTest::addColumn<QString>("what");
    for (const char* what : {"removed", "written", "another one"})
        QTest::newRow(what) << what;
}

void TestCleaningPlan::nothingGoesForACopyThatIsNotThereAnyMore()
{
    QFETCH(QString, what);
    const CleaningPlan plan({{write("a"), write("b")}, {write("c"), write("d")}}, rules({"first"}));
    if (what == "written")
        write("a", 3);
    else
        QCOMPARE(::unlink(at("a").c_str()), 0);
    if (what == "another one")
        QCOMPARE(::rename(at("c").c_str(), at("a").c_str()), 0);
    const QString stays = ": the copy that is kept in its place is not as it was found";
    QCOMPARE(carriedOut(plan), (QStringList{"b" + stays, what == "another one" ? "d" + stays : "d"}));
    QVERIFY(FileState::of(at("b")).exists());
}

void TestCleaningPlan::whatBecameTheKeptFileStays()
{
    const CleaningPlan plan({{write("f/a"), write("b")}}, rules({"first"}));
    QCOMPARE(::unlink(at("b").c_str()), 0);
    QCOMPARE(::link(at("f/a").c_str(), at("b").c_str()), 0);
    const QStringList told = carriedOut(plan);
    QCOMPARE(told.size(), 1);
    QVERIFY(FileState::of(at("f/a")).exists());
    QVERIFY(FileState::of(at("b")).exists());
}

void TestCleaningPlan::itCanBeEnded()
{
    const CleaningPlan plan({{write("a"), write("b"), write("c")}}, rules({"first"}));
    QCOMPARE(carriedOut(plan, 1), (QStringList{"b", "ended"}));
    QVERIFY(FileState::of(at("c")).exists());
}

void TestCleaningPlan::namesAreAnyBytes()
{
    const CleaningPlan plan({{write("\xff\xfe"), write("\xfe\xff"), write("\xe9")}},
                            rules({"newest", "first"}));
    QCOMPARE(plan.going(), 2);
    QCOMPARE(carriedOut(plan).size(), 2);
    int there = 0;
    for (const QByteArray& name : {QByteArray("\xff\xfe"), QByteArray("\xfe\xff"), QByteArray("\xe9")})
        there += ::unlink(at(name).c_str()) == 0;
    QCOMPARE(there, 1);
}

QTEST_APPLESS_MAIN(TestCleaningPlan)
#include "tst_cleaningplan.moc"
