#include "collection/filecollection.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

#include <sys/stat.h>

class TestFileCollection : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void aFolderIsWalkedLevelByLevel();
    void upperCaseEndingsAreMusic();
    void windowsMediaIsPassedOver();
    void windowsMediaIsFoundApart();
    void aFileIsTakenByItsNameAlone();
    void hiddenEntriesAreTaken();
    void unreadableAndUnwritableEntriesAreLeftOut();
    void aLoopOfLinksIsWalkedOnce();
    void otherKindsOfFilesAreLeftOut();
    void namesThatAreNoTextAreLeftOut();
    void theWalkCanBeEnded();
    void deepFoldersAreWalked();

private:
    QString make(const QString& name) const;
    QStringList found() const;

    std::unique_ptr<QTemporaryDir> m_folder;
};

void TestFileCollection::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
}

QString TestFileCollection::make(const QString& name) const
{
    const QString path = m_folder->filePath(name);
    QDir().mkpath(QFileInfo(path).path());
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        qFatal("cannot make %s", qUtf8Printable(path));
    return path;
}

QStringList TestFileCollection::found() const
{
    QStringList names;
    for (const QString& path : FileCollection::musicFilesUnder(m_folder->path()))
        names.append(QDir(m_folder->path()).relativeFilePath(path));
    return names;
}

void TestFileCollection::aFolderIsWalkedLevelByLevel()
{
    make("b/c/deep.mp3");
    make("b/b.flac");
    make("z.ogg");
    make("a.mp3");
    make("c/c.wav");
    make("note.txt");
    QCOMPARE(found(), QStringList({"a.mp3", "z.ogg", "b/b.flac", "c/c.wav", "b/c/deep.mp3"}));
}

void TestFileCollection::upperCaseEndingsAreMusic()
{
    make("x.FLAC");
    QCOMPARE(found(), QStringList({"x.FLAC"}));
}

void TestFileCollection::windowsMediaIsPassedOver()
{
    const QString song = make("song.wma");
    QVERIFY(found().isEmpty());
    QVERIFY(FileCollection::musicFilesUnder(song).isEmpty());
}

/// Whoever asks may take it all the same.
void TestFileCollection::windowsMediaIsFoundApart()
{
    const QStringList media = {make("SONG.WMA"), make("folder/other.wma")};
    const QString music = make("folder/song.mp3");
    const FileCollection::Found found = FileCollection::filesUnder(m_folder->path());
    QCOMPARE(found.music, QStringList(music));
    QCOMPARE(found.windowsMedia, media);
    QCOMPARE(FileCollection::filesUnder(media.first()).windowsMedia, media.mid(0, 1));
}

void TestFileCollection::aFileIsTakenByItsNameAlone()
{
    QCOMPARE(FileCollection::musicFilesUnder("/nowhere/x.mp3"), QStringList({"/nowhere/x.mp3"}));
    QVERIFY(FileCollection::musicFilesUnder("/nowhere/x.txt").isEmpty());
    QVERIFY(FileCollection::musicFilesUnder("").isEmpty());
}

void TestFileCollection::hiddenEntriesAreTaken()
{
    make(".hidden.mp3");
    make(".folder/x.mp3");
    QCOMPARE(found(), QStringList({".hidden.mp3", ".folder/x.mp3"}));
}

void TestFileCollection::unreadableAndUnwritableEntriesAreLeftOut()
{
    const QString locked = make("locked.mp3");
    make("open.mp3");
    QFile::setPermissions(locked, QFile::ReadOwner);
    if (QFileInfo(locked).isWritable()) // root may write it all the same
        QCOMPARE(found(), QStringList({"locked.mp3", "open.mp3"}));
    else
        QCOMPARE(found(), QStringList({"open.mp3"}));
}

void TestFileCollection::aLoopOfLinksIsWalkedOnce()
{
    make("a/x.mp3");
    QVERIFY(QFile::link(m_folder->path(), m_folder->filePath("a/back")));
    QCOMPARE(found(), QStringList({"a/x.mp3"}));
}

void TestFileCollection::otherKindsOfFilesAreLeftOut()
{
    QCOMPARE(::mkfifo(QFile::encodeName(m_folder->filePath("pipe.mp3")).constData(), 0600), 0);
    QVERIFY(QFile::link(m_folder->filePath("gone.mp3"), m_folder->filePath("dangling.mp3")));
    QDir().mkpath(m_folder->filePath("folder.mp3"));
    QVERIFY(found().isEmpty());
}

void TestFileCollection::namesThatAreNoTextAreLeftOut()
{
    make("good.mp3");
    const QByteArray bad = QFile::encodeName(m_folder->path()) + "/bad\xFF.mp3";
    FILE* file = std::fopen(bad.constData(), "w");
    QVERIFY(file);
    std::fclose(file);
    const QStringList names = found();
    QCOMPARE(std::remove(bad.constData()), 0); // the folder's own removal would leave it, too
    QCOMPARE(names, QStringList({"good.mp3"}));
}

void TestFileCollection::theWalkCanBeEnded()
{
    make("a.mp3");
    make("b/b.mp3");
    int told = -1;
    const QStringList files = FileCollection::musicFilesUnder(m_folder->path(), [&told](int count) {
        told = count;
        return false;
    });
    QCOMPARE(files.size(), 1);
    QCOMPARE(told, 1);
}

void TestFileCollection::deepFoldersAreWalked()
{
    QString name;
    for (int i = 0; i < 60; ++i)
        name += "d/";
    make(name + "x.mp3");
    QCOMPARE(found(), QStringList({name + "x.mp3"}));
}

QTEST_GUILESS_MAIN(TestFileCollection)
#include "tst_filecollection.moc"
