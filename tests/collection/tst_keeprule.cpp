#include "collection/keeprule.h"
#include "filebytes.h"

#include <QDir>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

class TestKeepRule : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void aRuleHasAName_data();
    void aRuleHasAName();
    void whatMakesNoSenseIsNamed_data();
    void whatMakesNoSenseIsNamed();
    void aRuleChooses_data();
    void aRuleChooses();
    void aRuleChoosesAmongThoseLeft();
    void whatIsAlikeIsLeft_data();
    void whatIsAlikeIsLeft();
    void aLinkCountsAsWhatItLeadsTo();
    void foldersAreTheSameBehindLinks();

private:
    std::string at(const QString& name) const
    {
        return QFile::encodeName(m_folder->filePath(name)).toStdString();
    }
    SongCopy copy(const QString& name) const;
    SongCopy copy(const QString& name, int size, int day, const BestCopy::Sound& sound = {}) const;
    KeepRule rule(const std::string& name) const;
    QVector<int> chosen(const std::string& name, const QVector<SongCopy>& copies) const;

    std::unique_ptr<QTemporaryDir> m_folder;
};

void TestKeepRule::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    QDir(m_folder->path()).mkpath("main/album");
    QDir(m_folder->path()).mkpath("mainly");
}

SongCopy TestKeepRule::copy(const QString& name) const
{
    return {at(name), FileState::ofEntry(at(name)), {}};
}

SongCopy TestKeepRule::copy(const QString& name, int size, int day, const BestCopy::Sound& sound) const
{
    Fixtures::saveBytes(QByteArray(size, 'x'), m_folder->filePath(name));
    SongCopy made = copy(name);
    made.state.file.modified = day;
    made.sound = sound;
    return made;
}

KeepRule TestKeepRule::rule(const std::string& name) const
{
    QString problem;
    const std::optional<KeepRule> rule = KeepRule::named(name == "in" ? "in:" + at("main") : name, problem);
    if (!rule)
        qFatal("%s", qUtf8Printable(problem));
    return *rule;
}

/// Of all of them.
QVector<int> TestKeepRule::chosen(const std::string& name, const QVector<SongCopy>& copies) const
{
    QVector<int> all;
    for (int i = 0; i < copies.size(); ++i)
        all.append(i);
    return rule(name).choose(copies, all);
}

void TestKeepRule::aRuleHasAName_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("reason");
    QTest::newRow("best") << "best"
                          << "sounds best";
    QTest::newRow("first") << "first"
                           << "is the first";
    QTest::newRow("newest") << "newest"
                            << "is the newest";
    QTest::newRow("oldest") << "oldest"
                            << "is the oldest";
    QTest::newRow("largest") << "largest"
                             << "is the largest";
    QTest::newRow("shortest path") << "shortest-path"
                                   << "has the shortest path";
    QTest::newRow("root") << "in:/"
                          << "lies in /";
}

void TestKeepRule::aRuleHasAName()
{
    QFETCH(QString, name);
    QFETCH(QString, reason);
    QString problem;
    const std::optional<KeepRule> rule = KeepRule::named(name.toStdString(), problem);
    QVERIFY2(rule, qPrintable(problem));
    QCOMPARE(rule->reason(), reason);
    QCOMPARE(problem, QString());
}

void TestKeepRule::whatMakesNoSenseIsNamed_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("part");
    QTest::newRow("nothing") << ""
                             << "\"\" is no rule";
    QTest::newRow("another word") << "biggest"
                                  << "\"biggest\" is no rule";
    QTest::newRow("capitals") << "Best"
                              << "\"Best\" is no rule";
    QTest::newRow("no folder") << "in:"
                               << "there is no folder \"\"";
    QTest::newRow("a folder that is not there") << "in:/no/such"
                                                << "there is no folder \"/no/such\"";
    QTest::newRow("a file") << "in:/dev/null"
                            << "there is no folder \"/dev/null\"";
}

void TestKeepRule::whatMakesNoSenseIsNamed()
{
    QFETCH(QString, name);
    QFETCH(QString, part);
    QString problem;
    QVERIFY(!KeepRule::named(name.toStdString(), problem));
    QVERIFY2(problem.startsWith(part), qPrintable(problem));
}

void TestKeepRule::aRuleChooses_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("position");
    QTest::newRow("best") << "best" << 1;
    QTest::newRow("first") << "first" << 0;
    QTest::newRow("newest") << "newest" << 2;
    QTest::newRow("oldest") << "oldest" << 1;
    QTest::newRow("largest") << "largest" << 0;
    QTest::newRow("shortest path") << "shortest-path" << 3;
    QTest::newRow("in a folder") << "in" << 2;
}

void TestKeepRule::aRuleChooses()
{
    QFETCH(QString, name);
    QFETCH(int, position);
    const QVector<SongCopy> copies = {copy("mainly/a.mp3", 400, 20),
                                      copy("mainly/b.flac", 300, 10, {"FLAC", 900, 44100, 0}),
                                      copy("main/album/c.mp3", 300, 30), copy("d.mp3", 100, 20)};
    QCOMPARE(chosen(name.toStdString(), copies), QVector<int>{position});
}

void TestKeepRule::aRuleChoosesAmongThoseLeft()
{
    const QVector<SongCopy> copies = {copy("a", 400, 20, {"FLAC", 900, 44100, 0}), copy("bb", 300, 10),
                                      copy("cc", 300, 30), copy("dd", 200, 20)};
    QCOMPARE(rule("largest").choose(copies, {1, 2, 3}), (QVector<int>{1, 2}));
    QCOMPARE(rule("shortest-path").choose(copies, {1, 3}), (QVector<int>{1, 3}));
    QCOMPARE(rule("best").choose(copies, {2, 3}), (QVector<int>{2, 3}));
    QCOMPARE(rule("first").choose(copies, {2, 3}), QVector<int>{2});
    QCOMPARE(rule("best").choose(copies, {}), QVector<int>());
}

void TestKeepRule::whatIsAlikeIsLeft_data()
{
    QTest::addColumn<QString>("name");
    for (const char* name : {"best", "newest", "oldest", "largest", "shortest-path", "in"})
        QTest::newRow(name) << name;
}

void TestKeepRule::whatIsAlikeIsLeft()
{
    QFETCH(QString, name);
    QCOMPARE(chosen(name.toStdString(), {copy("a", 10, 1), copy("b", 10, 1), copy("c", 10, 1)}),
             (QVector<int>{0, 1, 2}));
}

void TestKeepRule::aLinkCountsAsWhatItLeadsTo()
{
    const QVector<SongCopy> copies = {copy("small.mp3", 200, 1), copy("large.mp3", 3000, 1)};
    QVERIFY(QFile::link("large.mp3", m_folder->filePath("l.mp3")));
    QCOMPARE(chosen("largest", {copies.at(0), copy("l.mp3")}), QVector<int>{1});
    QCOMPARE(chosen("newest", {copies.at(0), copy("l.mp3")}), QVector<int>{1});
}

/// However they are called.
void TestKeepRule::foldersAreTheSameBehindLinks()
{
    QVERIFY(QFile::link("main", m_folder->filePath("link")));
    const SongCopy elsewhere = copy("mainly/a.mp3", 1, 1);
    const SongCopy inside = copy("main/album/a.mp3", 1, 1);
    SongCopy throughLink = inside;
    throughLink.path = at("link/album/a.mp3");
    QCOMPARE(chosen("in", {elsewhere, throughLink}), QVector<int>{1});
    QCOMPARE(chosen("in:" + at("link"), {elsewhere, inside}), QVector<int>{1});
    QCOMPARE(chosen("in:" + at("link/"), {elsewhere, inside}), QVector<int>{1});
    QCOMPARE(chosen("shortest-path", {inside, throughLink}), (QVector<int>{0, 1}));
}

QTEST_APPLESS_MAIN(TestKeepRule)
#include "tst_keeprule.moc"
