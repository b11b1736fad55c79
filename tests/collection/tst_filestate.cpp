#include "collection/filestate.h"
#include "filebytes.h"

#include <QDateTime>
#include <QTemporaryDir>
#include <QtTest>

#ifdef Q_OS_UNIX
#include <sys/stat.h>
#endif

using namespace Fixtures;

class TestFileState : public QObject
{
    Q_OBJECT

private slots:
    void onlyRegularFilesExist();
    void anUntouchedFileKeepsItsState();
    void aChangeOfLengthOrTimeChangesTheState();
    void anotherFileMovedIntoPlaceChangesTheState();
    void aLinkHasTheStateOfItsFile();
    void aFileIsAsItWasLeftOrNot();
};

void TestFileState::onlyRegularFilesExist()
{
    const QTemporaryDir folder;
    QVERIFY(!FileState::of(QString()).exists());
    QVERIFY(!FileState::of(folder.path()).exists());
    QVERIFY(!FileState::of(folder.filePath("nothing")).exists());
    QVERIFY(!FileState::of(folder.filePath(QString(5000, 'x'))).exists());
    QVERIFY(FileState::of(saveBytes(QByteArray(), folder.filePath("empty"))).exists());
    QVERIFY(FileState::of(saveBytes("x", folder.filePath(QStringLiteral("Ünï cödé")))).exists());
#ifdef Q_OS_UNIX
    QCOMPARE(::mkfifo(QFile::encodeName(folder.filePath("pipe")).constData(), 0600), 0);
    QVERIFY(!FileState::of(folder.filePath("pipe")).exists());
    QVERIFY(!FileState::of(QStringLiteral("/dev/zero")).exists());
#endif
}

void TestFileState::anUntouchedFileKeepsItsState()
{
    const QTemporaryDir folder;
    const FileState state = FileState::of(saveBytes("cover", folder.filePath("file")));
    QCOMPARE(FileState::of(folder.filePath("file")), state);
    QCOMPARE(qHash(FileState::of(folder.filePath("file")), 5), qHash(state, 5));
    QVERIFY(FileState::of(saveBytes("cover", folder.filePath("other"))) != state);
}

void TestFileState::aChangeOfLengthOrTimeChangesTheState()
{
    const QTemporaryDir folder;
    const QString path = saveBytes("cover", folder.filePath("file"));
    const FileState before = FileState::of(path);
    QFile file(path);
    QVERIFY(file.open(QIODevice::ReadWrite));
    QVERIFY(file.setFileTime(QDateTime::currentDateTime().addSecs(-9), QFileDevice::FileModificationTime));
    const FileState touched = FileState::of(path);
    QVERIFY(touched != before);
    file.close();
    saveBytes("longer cover", path);
    QVERIFY(FileState::of(path) != touched);
}

void TestFileState::anotherFileMovedIntoPlaceChangesTheState()
{
    const QTemporaryDir folder;
    const QString path = saveBytes("one", folder.filePath("file"));
    const FileState before = FileState::of(path);
    const QString other = saveBytes("two!", folder.filePath("other"));
    QVERIFY(QFile::remove(path));
    QVERIFY(QFile::rename(other, path));
    QVERIFY(FileState::of(path) != before);
}

void TestFileState::aLinkHasTheStateOfItsFile()
{
#ifndef Q_OS_UNIX
    QSKIP("links are other files here");
#endif
    const QTemporaryDir folder;
    const QString path = saveBytes("cover", folder.filePath("file"));
    QVERIFY(QFile::link(path, folder.filePath("link")));
    QCOMPARE(FileState::of(folder.filePath("link")), FileState::of(path));
    QVERIFY(QFile::remove(path));
    QVERIFY(!FileState::of(folder.filePath("link")).exists());
}

/// Also where the disk gave it another number.
void TestFileState::aFileIsAsItWasLeftOrNot()
{
    const QTemporaryDir folder;
    const QString path = saveBytes("cover", folder.filePath("file"));
    const FileState left = FileState::of(path);
    FileState now = left;
    ++now.file.inode;
    QCOMPARE(whyNotAsLeft(left, now), QString());
    ++now.file.modified;
    QCOMPARE(whyNotAsLeft(left, now), QString("another program changed the file since"));
    QCOMPARE(whyNotAsLeft(FileState(), left), QString("another program changed the file since"));
    QVERIFY(QFile::remove(path));
    QCOMPARE(whyNotAsLeft(left, FileState::of(path)), QString("the file is gone"));
}

QTEST_GUILESS_MAIN(TestFileState)
#include "tst_filestate.moc"
