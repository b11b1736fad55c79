// The application key in the user's configuration folder.
#include "audiofile.h"
#include "identify/keyfile.h"
#include "identify/services.h"

#include <QDir>
#include <QTemporaryDir>
#include <QtTest>

#include <sys/stat.h>
#include <unistd.h>

class TestKeyFile : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void theFileHoldsTheKey_data();
    void theFileHoldsTheKey();
    void whatIsNoKeyIsPassedOver_data();
    void whatIsNoKeyIsPassedOver();
    void othersMayNotWriteIntoIt_data();
    void othersMayNotWriteIntoIt();
    void anothersFileIsPassedOver();
    void whatIsNoFileIsNone();
    void itLiesInTheConfigurationFolder();
    void theEnvironmentComesFirst();

private:
    void write(const QByteArray& content) const;
    QString path() const { return m_folder->filePath("melodrift/acoustid-key"); }

    std::unique_ptr<QTemporaryDir> m_folder;
};

void TestKeyFile::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    QVERIFY(QDir(m_folder->path()).mkpath("melodrift"));
    qputenv("XDG_CONFIG_HOME", m_folder->path().toUtf8());
    qunsetenv("MELODRIFT_ACOUSTID_KEY");
    AudioFile::takeLog();
}

void TestKeyFile::write(const QByteArray& content) const
{
    QFile file(path());
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(content);
    file.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ReadGroup | QFile::ReadOther);
}

void TestKeyFile::theFileHoldsTheKey_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QString>("key");
    QTest::newRow("alone") << QByteArray("aB3-_x") << "aB3-_x";
    QTest::newRow("in a line") << QByteArray("aB3\n") << "aB3";
    QTest::newRow("with blanks") << QByteArray(" \r\n\taB3 \r\n\n") << "aB3";
    QTest::newRow("as long as keys go") << QByteArray(64, 'k') + "\n" << QString(64, 'k');
}

void TestKeyFile::theFileHoldsTheKey()
{
    QFETCH(QByteArray, content);
    QFETCH(QString, key);
    write(content);
    QCOMPARE(QString::fromStdString(audiocore::keyInFile()), key);
    QCOMPARE(AudioFile::takeLog(), QStringList());
}

void TestKeyFile::whatIsNoKeyIsPassedOver_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("blanks") << QByteArray(" \n");
    QTest::newRow("two lines") << QByteArray("aB3\nmore\n");
    QTest::newRow("signs") << QByteArray("key=aB3");
    QTest::newRow("a zero") << QByteArray("a\0b", 3);
    QTest::newRow("no ASCII") << QByteArray("schl\xC3\xBCssel");
    QTest::newRow("too long") << QByteArray(65, 'k');
    QTest::newRow("far too long") << QByteArray(10000000, 'k');
}

void TestKeyFile::whatIsNoKeyIsPassedOver()
{
    QFETCH(QByteArray, content);
    write(content);
    QCOMPARE(QString::fromStdString(audiocore::keyInFile()), QString());
    const QStringList log = AudioFile::takeLog();
    QCOMPARE(log.size(), 1);
    QVERIFY2(log[0].contains(path()) && log[0].contains("holds no key"), qPrintable(log[0]));
}

void TestKeyFile::othersMayNotWriteIntoIt_data()
{
    QTest::addColumn<int>("mode");
    QTest::addColumn<bool>("taken");
    for (const int mode : {0600, 0400, 0640, 0644, 0700})
        QTest::addRow("%o", mode) << mode << true;
    for (const int mode : {0620, 0660, 0664, 0602, 0666, 0777})
        QTest::addRow("%o", mode) << mode << false;
}

void TestKeyFile::othersMayNotWriteIntoIt()
{
    QFETCH(int, mode);
    QFETCH(bool, taken);
    write("aB3");
    QCOMPARE(::chmod(qPrintable(path()), mode_t(mode)), 0);
    QCOMPARE(QString::fromStdString(audiocore::keyInFile()), QString(taken ? "aB3" : ""));
    const QString log = AudioFile::takeLog().join("");
    QVERIFY2(taken ? log.isEmpty() : log.contains("others may write"), qPrintable(log));
}

void TestKeyFile::anothersFileIsPassedOver()
{
    write("aB3");
    if (::chown(qPrintable(path()), 65534, gid_t(-1)) != 0)
        QSKIP("only root can give files away");
    QCOMPARE(QString::fromStdString(audiocore::keyInFile()), QString());
    QVERIFY(AudioFile::takeLog().join("").contains("not your own"));
}

void TestKeyFile::whatIsNoFileIsNone()
{
    QCOMPARE(audiocore::keyInFile(), std::string());
    QVERIFY(QDir(m_folder->path()).mkpath("melodrift/acoustid-key"));
    QCOMPARE(audiocore::keyInFile(), std::string());
    QVERIFY(QDir(path()).removeRecursively());
    QCOMPARE(::mkfifo(qPrintable(path()), 0600), 0);
    QCOMPARE(audiocore::keyInFile(), std::string());
    QCOMPARE(AudioFile::takeLog(), QStringList());
    // A link to a file of one's own is as good as the file.
    QVERIFY(QFile::remove(path()));
    write("aB3");
    QVERIFY(QFile::rename(path(), m_folder->filePath("elsewhere")));
    QVERIFY(QFile::link(m_folder->filePath("elsewhere"), path()));
    QCOMPARE(audiocore::keyInFile(), std::string("aB3"));
}

void TestKeyFile::itLiesInTheConfigurationFolder()
{
    write("aB3");
    qputenv("XDG_CONFIG_HOME", "relative");
    const QByteArray home = qgetenv("HOME");
    qputenv("HOME", m_folder->path().toUtf8());
    QCOMPARE(audiocore::keyInFile(), std::string());
    QVERIFY(QDir(m_folder->path()).mkpath(".config"));
    QVERIFY(QFile::rename(m_folder->filePath("melodrift"), m_folder->filePath(".config/melodrift")));
    QCOMPARE(audiocore::keyInFile(), std::string("aB3"));
    qunsetenv("XDG_CONFIG_HOME");
    QCOMPARE(audiocore::keyInFile(), std::string("aB3"));
    qunsetenv("HOME");
    QCOMPARE(audiocore::keyInFile(), std::string());
    qputenv("HOME", home);
}

void TestKeyFile::theEnvironmentComesFirst()
{
    write("aB3");
    QCOMPARE(audiocore::configuredAddresses().key, std::string("aB3"));
    qputenv("MELODRIFT_ACOUSTID_KEY", "of the environment");
    QCOMPARE(audiocore::configuredAddresses().key, std::string("of the environment"));
    qputenv("MELODRIFT_ACOUSTID_KEY", "");
    QCOMPARE(audiocore::configuredAddresses().key, std::string("aB3"));
}

QTEST_GUILESS_MAIN(TestKeyFile)
#include "tst_keyfile.moc"
