// What a failed save answers to whoever asks why.
#include "audiocore/iaudiotag.h"
#include "audiocore/saveproblem.h"
#include "audiofile.h"
#include "fixtures.h"
#include "interposed.h"

#include <QTemporaryDir>
#include <QtTest>

#include <cerrno>
#include <functional>
#include <memory>

#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {
constexpr uid_t ordinaryUser = 65534;
constexpr int outOfReach = 77;

using Tag = std::unique_ptr<IAudioTag, ReleaseTag>;

QByteArray contentOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void setMode(const QString& path, mode_t mode)
{
    QCOMPARE(::chmod(QFile::encodeName(path).constData(), mode), 0);
}

Tag opened(const QString& path)
{
    Tag tag(CreateTag());
    tag->Open(path.toStdU32String().c_str());
    return tag;
}

SaveProblem saveTitle(IAudioTag& tag)
{
    std::u32string title = U"New";
    tag.SetItem({-1, TAG_TITLE, 0, std::int32_t(title.size() * sizeof(char32_t)), title.data()});
    const bool saved = tag.Save() == 0;
    const SaveProblem problem = SaveProblemOf(&tag);
    return saved == (problem == SAVE_NO_PROBLEM) ? problem : SaveProblem(-1);
}

SaveProblem saveTitle(const QString& path)
{
    return saveTitle(*opened(path));
}

/// The answer to an ordinary user, or that he cannot come to the file.
int askAsOrdinaryUser(const QString& path)
{
    const pid_t child = ::fork();
    if (child == 0) {
        if (::geteuid() == 0 && (::setgid(ordinaryUser) != 0 || ::setuid(ordinaryUser) != 0))
            ::_exit(outOfReach);
        const bool reached = ::access(QFile::encodeName(path).constData(), R_OK) == 0;
        ::_exit(reached ? int(saveTitle(path)) : outOfReach);
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}
} // namespace

class TestSaveProblem : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void aSaveHasNoProblem();
    void whatIsReadOnlyIsNamed();
    void aReadOnlyDiskIsNamed();
    void whoMayNotWriteHearsSo_data();
    void whoMayNotWriteHearsSo();
    void aFullDiskIsNamed_data();
    void aFullDiskIsNamed();
    void aFileThatNeverRestsWasChanged();
    void aFileThatIsGoneIsGone();
    void whatCannotBeWrittenSafelyIsNot();
    void aPictureThatIsTooLargeIsNamed();
    void howLargeAPictureMayBeIsKnownBefore_data();
    void howLargeAPictureMayBeIsKnownBefore();
    void theNextSaveAnswersForItself();

private:
    std::unique_ptr<QTemporaryDir> m_folder;
    QString m_song;
    QByteArray m_before;
};

void TestSaveProblem::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    m_song = Fixtures::copyTone(QStringLiteral("mp3"), m_folder->path());
    m_before = contentOf(m_song);
    AudioFile::takeLog();
}

void TestSaveProblem::cleanup()
{
    setMode(m_folder->path(), 0755);
    AudioFile::takeLog();
}

void TestSaveProblem::aSaveHasNoProblem()
{
    const Tag tag = opened(m_song);
    QCOMPARE(SaveProblemOf(tag.get()), SAVE_NO_PROBLEM);
    QCOMPARE(tag->Save(), 0); // nothing to do
    QCOMPARE(SaveProblemOf(tag.get()), SAVE_NO_PROBLEM);
    QCOMPARE(saveTitle(*tag), SAVE_NO_PROBLEM);
}

void TestSaveProblem::whatIsReadOnlyIsNamed()
{
    setMode(m_song, 0444);
    QCOMPARE(saveTitle(m_song), SAVE_FILE_READ_ONLY);
    setMode(m_song, 0644);
    setMode(m_folder->path(), 0555);
    QCOMPARE(saveTitle(m_song), SAVE_FOLDER_READ_ONLY);
    QCOMPARE(contentOf(m_song), m_before);
    QCOMPARE(AudioFile::takeLog().size(), 2);
}

void TestSaveProblem::aReadOnlyDiskIsNamed()
{
    const Interposed::Guard guard;
    Interposed::accessFails = [](const char*) { return EROFS; };
    QCOMPARE(saveTitle(m_song), SAVE_DISK_READ_ONLY);
    QCOMPARE(contentOf(m_song), m_before);
}

void TestSaveProblem::whoMayNotWriteHearsSo_data()
{
    QTest::addColumn<int>("ofFolder");
    QTest::addColumn<int>("ofFile");
    QTest::newRow("the file") << 0777 << 0644;
    QTest::newRow("the folder") << 0755 << 0666;
}

void TestSaveProblem::whoMayNotWriteHearsSo()
{
    QFETCH(int, ofFolder);
    QFETCH(int, ofFile);
    if (::geteuid() != 0)
        QSKIP("only root can ask for another user");
    setMode(m_folder->path(), mode_t(ofFolder));
    setMode(m_song, mode_t(ofFile));
    const int answer = askAsOrdinaryUser(m_song);
    if (answer == outOfReach)
        QSKIP("an ordinary user cannot come to the temporary folder");
    QCOMPARE(answer, int(SAVE_NO_PERMISSION));
    QCOMPARE(contentOf(m_song), m_before);
}

void TestSaveProblem::aFullDiskIsNamed_data()
{
    QTest::addColumn<bool>("copyFits");
    QTest::newRow("for the copy") << false;
    QTest::newRow("for the tag") << true;
}

void TestSaveProblem::aFullDiskIsNamed()
{
    QFETCH(bool, copyFits);
    const Interposed::Guard guard;
    Interposed::writeFails = [] { return true; };
    if (!copyFits)
        Interposed::copiesInKernel = [](size_t) { return ssize_t(-1); };
    QCOMPARE(saveTitle(m_song), SAVE_DISK_FULL);
    QCOMPARE(contentOf(m_song), m_before);
}

void TestSaveProblem::aFileThatNeverRestsWasChanged()
{
    const Interposed::Guard guard;
    Interposed::beforeSync = [this] {
        QFile file(m_song);
        QVERIFY(file.open(QIODevice::Append) && file.write("more") == 4);
    };
    QCOMPARE(saveTitle(m_song), SAVE_CHANGED_MEANWHILE);
}

void TestSaveProblem::aFileThatIsGoneIsGone()
{
    const Tag tag = opened(m_song);
    QVERIFY(QFile::remove(m_song));
    QCOMPARE(saveTitle(*tag), SAVE_FILE_GONE);
    QVERIFY(!QFile::exists(m_song));
    QCOMPARE(saveTitle(m_folder->filePath(QStringLiteral("no/such/song.mp3"))), SAVE_FILE_GONE);
}

void TestSaveProblem::whatCannotBeWrittenSafelyIsNot()
{
    QFile file(m_song);
    QVERIFY(file.open(QIODevice::WriteOnly) && file.write("no music at all") > 0);
    file.close();
    QCOMPARE(saveTitle(m_song), SAVE_NOT_SAFE);
    QCOMPARE(contentOf(m_song), QByteArray("no music at all"));
}

void TestSaveProblem::aPictureThatIsTooLargeIsNamed()
{
    constexpr int moreThanABlockHolds = 17 * 1024 * 1024;
    const Tag tag = opened(Fixtures::copyTone(QStringLiteral("flac"), m_folder->path()));
    QByteArray picture = Fixtures::jpeg(60, 60, 1);
    picture.append(moreThanABlockHolds, 'x');
    tag->SetItem({-1, TAG_PICTURE, 1, picture.size(), picture.data()});
    QCOMPARE(saveTitle(*tag), SAVE_PICTURE_TOO_LARGE);
}

void TestSaveProblem::howLargeAPictureMayBeIsKnownBefore_data()
{
    QTest::addColumn<QString>("kind");
    for (const QString& kind : Fixtures::formats())
        QTest::newRow(qPrintable(kind)) << kind;
}

void TestSaveProblem::howLargeAPictureMayBeIsKnownBefore()
{
    QFETCH(QString, kind);
    const Tag tag = opened(Fixtures::copyTone(kind, m_folder->path(), QStringLiteral("other")));
    const std::uint32_t most = LargestPictureFor(tag.get());
    QVERIFY(most > 8 * 1024 * 1024);
    QByteArray picture = Fixtures::jpeg(60, 60, 1);
    picture.append(int(most) + 1 - picture.size(), 'x');
    tag->SetItem({-1, TAG_PICTURE, 1, picture.size(), picture.data()});
    QCOMPARE(saveTitle(*tag), SAVE_PICTURE_TOO_LARGE);
    if (kind == QLatin1String("flac")) { // writing so much takes a while
        tag->SetItem({-1, TAG_PICTURE, 1, picture.size() - 1, picture.data()});
        QCOMPARE(saveTitle(*tag), SAVE_NO_PROBLEM);
    }
    tag->Close();
    QCOMPARE(LargestPictureFor(tag.get()), 0u);
    QVERIFY(QFile::resize(m_song, 0));
    QCOMPARE(LargestPictureFor(opened(m_song).get()), 0u);
}

void TestSaveProblem::theNextSaveAnswersForItself()
{
    const Tag tag = opened(m_song);
    setMode(m_song, 0444);
    QCOMPARE(saveTitle(*tag), SAVE_FILE_READ_ONLY);
    const Tag other = opened(Fixtures::copyTone(QStringLiteral("wav"), m_folder->path()));
    QCOMPARE(saveTitle(*other), SAVE_NO_PROBLEM);
    QCOMPARE(SaveProblemOf(tag.get()), SAVE_FILE_READ_ONLY);
    setMode(m_song, 0644);
    QCOMPARE(saveTitle(*tag), SAVE_NO_PROBLEM);
    setMode(m_song, 0444);
    QCOMPARE(saveTitle(*tag), SAVE_NO_PROBLEM); // it holds the title already
    tag->Close();
    QVERIFY(tag->Save() != 0);
    QCOMPARE(SaveProblemOf(tag.get()), SAVE_OTHER_PROBLEM);
}

QTEST_GUILESS_MAIN(TestSaveProblem)
#include "tst_saveproblem.moc"
