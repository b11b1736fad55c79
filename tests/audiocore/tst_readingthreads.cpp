// What threads that read songs side by side ask of the disk.
#include "audiocore/iaudiodecoder.h"
#include "audiofile.h"
#include "fixtures.h"
#include "interposed.h"

#include <QTemporaryDir>

#include <thread>

class TestReadingThreads : public QObject
{
    Q_OBJECT

private slots:
    void noneTakesAnothersReadingAway();
};

void TestReadingThreads::noneTakesAnothersReadingAway()
{
    const QTemporaryDir folder;
    const QString song = Fixtures::copyTone("mp3", folder.path(), "song");
    const QString other = Fixtures::copyTone("mp3", folder.path(), "other");
    const AudioFile::Properties properties = AudioFile::properties(song);
    std::thread([&other] { AudioFile::properties(other); }).join();
    const Interposed::Guard guard;
    int reads = 0;
    Interposed::readFails = [&reads](int, off_t) {
        ++reads;
        return false;
    };
    QCOMPARE(AudioFile::properties(song).duration, properties.duration);
    QCOMPARE(reads, 0);
    AudioFile::properties(other); // which this thread did not read
    QVERIFY(reads > 0);
}

QTEST_GUILESS_MAIN(TestReadingThreads)
#include "tst_readingthreads.moc"
