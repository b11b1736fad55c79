#include "collection/namepattern.h"

#include <QtTest>

using Texts = QMap<QString, QString>;

class TestNamePattern : public QObject
{
    Q_OBJECT

private slots:
    void readsFields_data();
    void readsFields();
    void saysWhatMakesNoSense_data();
    void saysWhatMakesNoSense();
    void aNameThatIsNoTextSaysNothing();
};

void TestNamePattern::readsFields_data()
{
    QTest::addColumn<QString>("pattern");
    QTest::addColumn<QString>("path");
    QTest::addColumn<Texts>("texts");
    QTest::newRow("a title") << "{title}"
                             << "/m/Halo.mp3" << Texts{{"title", "Halo"}};
    QTest::newRow("as little as it can") << "{artist} - {title}"
                                         << "/m/A - B - C.mp3" << Texts{{"artist", "A"}, {"title", "B - C"}};
    QTest::newRow("numbers") << "{track} {title} ({year})"
                             << "01 Halo (2004).flac"
                             << Texts{{"track", "1"}, {"title", "Halo"}, {"year", "2004"}};
    QTest::newRow("folders") << "{artist}/{album}/{ignore} {title}"
                             << "/m/Zoé/First/01 Halo.mp3"
                             << Texts{{"artist", "Zoé"}, {"album", "First"}, {"title", "Halo"}};
    QTest::newRow("points") << "{title}.{genre}"
                            << "No. 1.Pop.mp3" << Texts{{"title", "No"}, {"genre", "1.Pop"}};
    QTest::newRow("no ending") << "{title}"
                               << "/m.d/Halo" << Texts{{"title", "Halo"}};
    QTest::newRow("hidden") << "{title}"
                            << "/m/.Halo" << Texts{{"title", ".Halo"}};
    QTest::newRow("signs of expressions") << "[{track}] {title}+"
                                          << "[3] Halo+.mp3" << Texts{{"track", "3"}, {"title", "Halo"}};
    QTest::newRow("outer blanks") << "{artist}-{title}"
                                  << "Zoé - Halo .mp3" << Texts{{"artist", "Zoé"}, {"title", "Halo"}};
    QTest::newRow("not alike") << "{artist} - {title}"
                               << "/m/Halo.mp3" << Texts();
    QTest::newRow("no number") << "{track} {title}"
                               << "/m/One Halo.mp3" << Texts();
    QTest::newRow("too few folders") << "{artist}/{title}"
                                     << "Halo.mp3" << Texts();
}

void TestNamePattern::readsFields()
{
    QFETCH(QString, pattern);
    QFETCH(QString, path);
    QFETCH(Texts, texts);
    QString wrong;
    const NamePattern parsed(pattern, wrong);
    QCOMPARE(wrong, QString());
    QCOMPARE(parsed.read(path.toStdString()), texts);
}

void TestNamePattern::saysWhatMakesNoSense_data()
{
    QTest::addColumn<QString>("pattern");
    QTest::addColumn<QString>("reason");
    QTest::newRow("no field") << "title"
                              << "names no field";
    QTest::newRow("an unknown one") << "{titel}"
                                    << "no field {titel}";
    QTest::newRow("open") << "{title"
                          << "not closed";
    QTest::newRow("closed") << "title}"
                            << "closes nothing";
    QTest::newRow("twice") << "{title} {title}"
                           << "{title} is there twice";
    QTest::newRow("side by side") << "{artist}{title}"
                                  << "between {title}";
}

void TestNamePattern::saysWhatMakesNoSense()
{
    QFETCH(QString, pattern);
    QFETCH(QString, reason);
    QString wrong;
    const NamePattern parsed(pattern, wrong);
    QVERIFY2(wrong.contains(reason), qPrintable(wrong));
    QVERIFY(parsed.isEmpty());
}

void TestNamePattern::aNameThatIsNoTextSaysNothing()
{
    QString wrong;
    QVERIFY(NamePattern("{title}", wrong).read("/m/bad\xFF.mp3").isEmpty());
}

QTEST_GUILESS_MAIN(TestNamePattern)
#include "tst_namepattern.moc"
