// The committed pictures are what the vector sources and the render script make.
#include <QProcess>
#include <QStandardPaths>
#include <QtTest>

class TestSkinSources : public QObject
{
    Q_OBJECT

private slots:
    void theScriptReproducesThePictures();
    void theScriptSaysWhatItMisses();

private:
    /// The exit code and what the script said; -1 when it cannot be started at all.
    static int check(QString& said, const QProcessEnvironment& environment);
};

int TestSkinSources::check(QString& said, const QProcessEnvironment& environment)
{
    QProcess script;
    script.setProcessChannelMode(QProcess::MergedChannels);
    script.setProcessEnvironment(environment);
    script.start(QStandardPaths::findExecutable("python3", {"/usr/bin"}),
                 {MELODRIFT_ROOT "/art/render", "--check"});
    if (!script.waitForStarted(patience))
        return -1;
    // Two hundred pictures and frames; a busy machine takes its time.
    if (!script.waitForFinished(570000))
        return -2;
    said = QString::fromUtf8(script.readAll()).trimmed();
    return script.exitStatus() == QProcess::NormalExit ? script.exitCode() : -2;
}

void TestSkinSources::theScriptReproducesThePictures()
{
    QString said;
    const int code = check(said, QProcessEnvironment::systemEnvironment());
    if (code == -1)
        QSKIP("Python 3 is not installed, so the pictures cannot be rendered anew");
    if (code == 3)
        QSKIP(qPrintable("The pictures cannot be rendered anew: " + said));
    QVERIFY2(code == 0, qPrintable(said));
}

void TestSkinSources::theScriptSaysWhatItMisses()
{
    QProcessEnvironment bare = QProcessEnvironment::systemEnvironment();
    bare.insert("PATH", "/nowhere");
    QString said;
    const int code = check(said, bare);
    if (code == -1)
        QSKIP("Python 3 is not installed");
    QCOMPARE(code, 3);
    QVERIFY2(said.startsWith("art/render: "), qPrintable(said));
}

QTEST_GUILESS_MAIN(TestSkinSources)
#include "tst_skinsources.moc"
