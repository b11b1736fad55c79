// Which way the arrows run: the libraries below know nothing of the application above.
#include <QDirIterator>
#include <QRegularExpression>
#include <QtTest>

class TestArchitecture : public QObject
{
    Q_OBJECT

private slots:
    void librariesIncludeNothingFromAbove_data();
    void librariesIncludeNothingFromAbove();
    void theModeIsReadInFewPlaces();
};

namespace {
QStringList sourcesIn(const QString& folder)
{
    QStringList files;
    QDirIterator walk(QString(MELODRIFT_ROOT) + '/' + folder, {"*.h", "*.cpp"}, QDir::Files,
                      QDirIterator::Subdirectories);
    while (walk.hasNext())
        files.append(walk.next());
    return files;
}

QString contentOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}
} // namespace

void TestArchitecture::librariesIncludeNothingFromAbove_data()
{
    QTest::addColumn<QString>("folder");
    QTest::addColumn<QString>("forbidden");
    QTest::newRow("audiocore knows no Qt") << "audiocore"
                                           << "#include <Q|#include <Qt";
    QTest::newRow("itunes knows no Qt") << "itunes"
                                        << "#include <Q|#include <Qt";
    QTest::newRow("the kit knows no song")
        << "src/common"
        << "#include \"(qmusicinfo|songfields|localmusicinfo|centerwidget|mainwindow)";
}

void TestArchitecture::librariesIncludeNothingFromAbove()
{
    QFETCH(QString, folder);
    QFETCH(QString, forbidden);
    const QStringList files = sourcesIn(folder);
    QVERIFY(!files.isEmpty());
    QStringList above;
    for (const QString& path : sourcesIn("src"))
        if (path.endsWith(".h") && !path.contains("/common/"))
            above.append(QRegularExpression::escape(QFileInfo(path).fileName()));
    const QRegularExpression wrong(forbidden);
    const QRegularExpression fromApplication("#include \"(" + above.join('|') + ")\"");
    for (const QString& path : files) {
        QVERIFY2(!contentOf(path).contains(wrong), qPrintable(path));
        if (folder != "src/common")
            QVERIFY2(!contentOf(path).contains(fromApplication), qPrintable(path));
    }
}

void TestArchitecture::theModeIsReadInFewPlaces()
{
    QStringList readers;
    for (const QString& path : sourcesIn("src"))
        if (path.endsWith(".cpp") && contentOf(path).contains("m_cleanMode"))
            readers.append(QFileInfo(path).completeBaseName());
    readers.sort();
    // Fields come from songfields alone; the others ask what the mode lets the user do.
    QCOMPARE(readers, QStringList({"centerwidget", "dupmusicbarwidget", "mainwindow", "qiorvoutil",
                                   "songediting", "songfields", "songremoval"}));
}

QTEST_GUILESS_MAIN(TestArchitecture)
#include "tst_architecture.moc"
