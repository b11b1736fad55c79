// What plays songs is there before the user has the first one played.
#include "loadedlibraries.h"
#include "musicdetailedinfowidget.h"
#include "songfixtures.h"
#include "startup.h"

#include <QtTest>

class TestLoadPlayerThread : public QObject
{
    Q_OBJECT

public:
    static void initMain() { Startup::beforeApplication(); }

private slots:
    void thePlayerComesWithTheFirstSongShown();
};

void TestLoadPlayerThread::thePlayerComesWithTheFirstSongShown()
{
    const QString player = "libmelodrift-playback";
    Startup::afterApplication();
    const Fixtures::ModeGuard local(true);
    const std::unique_ptr<Fixtures::Song> song = Fixtures::makeSong(true);
    MusicDetailedInfoWidget panel;
    panel.SetMusicDetailedInfo(nullptr);
    QCoreApplication::processEvents();
    QCOMPARE(loadedBy("self", {player}), QStringList());
    panel.SetMusicDetailedInfo(&song->info);
    // The song is to be seen first.
    QCOMPARE(loadedBy("self", {player}), QStringList());
    QTRY_COMPARE(loadedBy("self", {player}), QStringList{player});
}

QTEST_MAIN(TestLoadPlayerThread)
#include "tst_loadplayerthread.moc"
