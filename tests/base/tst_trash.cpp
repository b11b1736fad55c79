#include "trashfixture.h"

#include <QDateTime>
#include <QtTest>

#include <fcntl.h>
#include <set>
#include <unistd.h>
#include <vector>

using base::Trash;
using base::TrashedFile;

/// Files go into the trash and come back.
class TestTrash : public TrashFixture
{
    Q_OBJECT

private slots:
    void init();
    void aFileGoesIntoTheTrashWithANote();
    void aFileComesBackAsItWas();
    void aLinkGoesItself();
    void whatIsNotAsItWasStaysInTheTrash_data();
    void whatIsNotAsItWasStaysInTheTrash();
    void anyNameGoesAndComesBack_data();
    void anyNameGoesAndComesBack();
    void equalNamesAreNumbered();
    void aFileWithoutANoteKeepsItsName();
};

void TestTrash::init()
{
    prepare();
    begin();
}

void TestTrash::aFileGoesIntoTheTrashWithANote()
{
    const QDateTime before = QDateTime::currentDateTime().addSecs(-1);
    TrashedFile taken;
    QCOMPARE(take(write("a b.mp3", "music"), taken), Trash::Taking::Done);
    QVERIFY(!QFile::exists(QFile::decodeName(m_files + "a b.mp3")));
    QCOMPARE(taken.path, at("a b.mp3"));
    QCOMPARE(read(inTrash(taken)), QByteArray("music"));
    QCOMPARE(trashed(), QStringList("a b.mp3"));
    QCOMPARE(notes(), QStringList("a b.mp3.trashinfo"));

    const QList<QByteArray> lines = read(noteOf(taken)).split('\n');
    QCOMPARE(lines.size(), 4);
    QCOMPARE(lines[0], QByteArray("[Trash Info]"));
    QCOMPARE(lines[1], QByteArray("Path=") + m_files + "a%20b.mp3");
    QVERIFY(lines[2].startsWith("DeletionDate="));
    const QDateTime date = QDateTime::fromString(lines[2].mid(13), "yyyy-MM-ddTHH:mm:ss");
    QVERIFY2(date >= before && date <= QDateTime::currentDateTime(), lines[2].constData());
    QCOMPARE(lines[3], QByteArray());

    struct stat status = {};
    for (const char* part : {"", "/files", "/info"}) {
        QCOMPARE(::stat((taken.trash + part).c_str(), &status), 0);
        QCOMPARE(int(status.st_mode & 07777), 0700);
    }
    QCOMPARE(::stat(noteOf(taken).c_str(), &status), 0);
    QCOMPARE(int(status.st_mode & 07777), 0600);
}

void TestTrash::aFileComesBackAsItWas()
{
    const std::string path = write("a.mp3", "music");
    const base::FileState before = stateOf(path);
    TrashedFile taken;
    QCOMPARE(take(path, taken), Trash::Taking::Done);
    begin(); // by another run
    QCOMPARE(m_bin->restore(taken, m_error), Trash::Restoring::Done);
    QCOMPARE(read(path), QByteArray("music"));
    QVERIFY(stateOf(path).hasContentOf(before));
    QCOMPARE(trashed(), QStringList());
    QCOMPARE(notes(), QStringList());
    QCOMPARE(m_bin->restore(taken, m_error), Trash::Restoring::Gone);
    QCOMPARE(read(path), QByteArray("music"));
}

void TestTrash::aLinkGoesItself()
{
    const std::string target = write("target.mp3", "music");
    QCOMPARE(::symlink("target.mp3", at("link.mp3").c_str()), 0);
    base::FileState link;
    struct stat status = {};
    QCOMPARE(::lstat(at("link.mp3").c_str(), &status), 0);
    link.device = status.st_dev;
    link.inode = status.st_ino;
    link.size = status.st_size;
    link.modified = std::int64_t(status.st_mtim.tv_sec) * 1000000000 + status.st_mtim.tv_nsec;
    link.link = true;
    TrashedFile taken;
    QCOMPARE(m_bin->take(at("link.mp3"), link, taken, m_error), Trash::Taking::Done);
    QCOMPARE(read(target), QByteArray("music"));
    QCOMPARE(m_bin->restore(taken, m_error), Trash::Restoring::Done);
    QCOMPARE(read(at("link.mp3")), QByteArray("music"));
    QVERIFY(QFileInfo(QFile::decodeName(m_files + "link.mp3")).isSymLink());
}

void TestTrash::whatIsNotAsItWasStaysInTheTrash_data()
{
    QTest::addColumn<QString>("what");
    QTest::addColumn<int>("answer");
    QTest::newRow("another size") << "size" << int(Trash::Restoring::Changed);
    QTest::newRow("another time") << "time" << int(Trash::Restoring::Changed);
    QTest::newRow("a link instead") << "link" << int(Trash::Restoring::Changed);
    QTest::newRow("emptied") << "gone" << int(Trash::Restoring::Gone);
    QTest::newRow("no trash any more") << "no trash" << int(Trash::Restoring::Gone);
    QTest::newRow("no folder to come back to") << "folder" << int(Trash::Restoring::Failed);
}

void TestTrash::whatIsNotAsItWasStaysInTheTrash()
{
    QFETCH(QString, what);
    QFETCH(int, answer);
    TrashedFile taken;
    const std::string path = write("a.mp3", "music");
    QCOMPARE(take(path, taken), Trash::Taking::Done);
    const timespec times[2] = {{1, 0}, {1, 0}};
    if (what == "size")
        QCOMPARE(::truncate(inTrash(taken).c_str(), 3), 0);
    else if (what == "time")
        QCOMPARE(::utimensat(AT_FDCWD, inTrash(taken).c_str(), times, 0), 0);
    else if (what == "folder")
        QVERIFY(QDir(QFile::decodeName(m_files)).removeRecursively());
    else if (what == "no trash")
        QVERIFY(QDir(QFile::decodeName(m_trash)).removeRecursively());
    else
        QCOMPARE(::unlink(inTrash(taken).c_str()), 0);
    if (what == "link")
        QCOMPARE(::symlink("12345", inTrash(taken).c_str()), 0);
    const QStringList files = trashed();
    const QStringList kept = notes();
    begin();
    QCOMPARE(int(m_bin->restore(taken, m_error)), answer);
    QVERIFY(!m_error.empty());
    QCOMPARE(read(path), QByteArray("nothing"));
    QCOMPARE(trashed(), files);
    QCOMPARE(notes(), kept);
}

void TestTrash::anyNameGoesAndComesBack_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::newRow("signs") << QByteArray("100% [x]=;#&?\"\\\n\t+ .mp3");
    QTest::newRow("UTF-8") << QByteArray("\xc3\x89lectro \xf0\x9f\x8e\xb5.mp3");
    QTest::newRow("no UTF-8") << QByteArray("\xff\xfe\x80\xc3.mp3");
    QTest::newRow("hidden") << QByteArray(".mp3");
    QTest::newRow("no ending") << QByteArray("music");
    QTest::newRow("a long ending") << QByteArray("a." + QByteArray(200, 'b'));
    QTest::newRow("a note's name") << QByteArray("a.mp3.trashinfo");
    QTest::newRow("255 bytes") << QByteArray(QByteArray(251, 'x') + ".mp3");
    QTest::newRow("255 bytes of long characters")
        << QByteArray("x" + QByteArray("\xe2\x82\xac").repeated(83) + "y.mp3");
    QTest::newRow("255 bytes of nothing") << QByteArray(255, '\x80');
}

void TestTrash::anyNameGoesAndComesBack()
{
    QFETCH(QByteArray, name);
    QVERIFY(name.size() <= 255);
    std::vector<TrashedFile> taken(3);
    std::set<std::string> names;
    for (TrashedFile& file : taken) {
        QVERIFY2(take(write(name, "music"), file) == Trash::Taking::Done, m_error.c_str());
        QCOMPARE(file.path, at(name));
        QCOMPARE(pathInNote(file), m_files + name);
        QCOMPARE(read(inTrash(file)), QByteArray("music"));
        const QByteArray kept = QByteArray::fromStdString(file.name);
        QVERIFY(!name.endsWith(".mp3") || kept.endsWith(".mp3") || name == ".mp3");
        QVERIFY(QString::fromUtf8(name).contains(QChar::ReplacementCharacter) ||
                !QString::fromUtf8(kept).contains(QChar::ReplacementCharacter));
        names.insert(file.name);
    }
    QCOMPARE(names.size(), taken.size());
    QCOMPARE(m_bin->restore(taken[1], m_error), Trash::Restoring::Done);
    QCOMPARE(read(at(name)), QByteArray("music"));
    QCOMPARE(trashed().size(), 2);
    QCOMPARE(notes().size(), 2);
}

void TestTrash::equalNamesAreNumbered()
{
    TrashedFile taken;
    for (int i = 0; i < 6; ++i)
        QCOMPARE(take(write("a.mp3", QByteArray::number(i)), taken), Trash::Taking::Done);
    QCOMPARE(trashed(), QStringList({"a.2.mp3", "a.3.mp3", "a.4.mp3", "a.5.mp3", "a.6.mp3", "a.mp3"}));
    QCOMPARE(read(inTrash(taken)), QByteArray("5"));
    QCOMPARE(QByteArray::fromStdString(taken.name), QByteArray("a.6.mp3"));
}

void TestTrash::aFileWithoutANoteKeepsItsName()
{
    TrashedFile taken;
    QCOMPARE(take(write("a.mp3", "music"), taken), Trash::Taking::Done);
    QCOMPARE(::unlink(noteOf(taken).c_str()), 0);
    TrashedFile next;
    QCOMPARE(take(write("a.mp3", "other"), next), Trash::Taking::Done);
    QCOMPARE(read(inTrash(taken)), QByteArray("music"));
    QCOMPARE(read(inTrash(next)), QByteArray("other"));
    QCOMPARE(notes(), QStringList("a.2.mp3.trashinfo"));
}

QTEST_GUILESS_MAIN(TestTrash)
#include "tst_trash.moc"
