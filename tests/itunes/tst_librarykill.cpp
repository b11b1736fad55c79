#include "audiocore/tagitem.h"
#include "audiofile.h"
#include "fixtures.h"
#include "itunesfixture.h"
#include "librarycalls.h"

#include <expat.h>

#include <QDir>
#include <QProcess>
#include <QRandomGenerator>
#include <QSet>
#include <QTemporaryDir>
#include <QtTest>

#include <unistd.h>

using Fixtures::ITunesTrack;
using LibraryCalls::contentOf;

namespace {
/// What an independent parser says.
bool isWellFormed(const QByteArray& document)
{
    const XML_Parser parser = XML_ParserCreate(nullptr);
    const bool sound = XML_Parse(parser, document.constData(), document.size(), 1) == XML_STATUS_OK;
    XML_ParserFree(parser);
    return sound;
}
} // namespace

class TestLibraryKill : public QObject
{
    Q_OBJECT

private slots:
    void aKillLosesNoAnsweredChangeAndNoLibrary();
};

void TestLibraryKill::aKillLosesNoAnsweredChangeAndNoLibrary()
{
    constexpr int kills = 200;
    constexpr int songs = 2000;
    const QTemporaryDir folder;
    const QString library = folder.filePath("Library.xml");
    QVector<ITunesTrack> tracks;
    QVector<int> all;
    for (int i = 0; i < songs; ++i) {
        const QString media =
            i < 3 ? Fixtures::copyTone("mp3", folder.path(), QString("song%1").arg(i)) : QString();
        tracks.append(i < 3 ? Fixtures::itunesTrack(i, media) : Fixtures::itunesTrack(i));
        all.append(tracks.last().trackId);
    }
    const QByteArray fresh = Fixtures::itunesLibrary(tracks, {{"All", all}});
    QSet<QByteArray> left;
    QHash<QByteArray, QByteArray> names;
    QRandomGenerator random(11);
    int changes = 0;
    int unfinished = 0;
    int temporaries = 0;
    for (int i = 0; i < kills; ++i) {
        if (left.size() < 200) {
            Fixtures::writeLibrary(library, fresh);
            for (const ITunesTrack& track : qAsConst(tracks)) {
                left.insert(Fixtures::itunesIdentifier(track.persistentId));
                names.insert(Fixtures::itunesIdentifier(track.persistentId), track.name);
            }
        }
        QProcess changer;
        changer.start(QCoreApplication::applicationDirPath() + "/library_changer",
                      {library, QString::number(i)});
        QVERIFY(changer.waitForReadyRead(30000)); // it is at work
        ::usleep(useconds_t(random.bounded(40000)));
        changer.kill();
        QVERIFY(changer.waitForFinished());

        // The change that was not answered any more may have happened or not.
        QByteArray output = changer.readAllStandardOutput();
        output.truncate(output.lastIndexOf('\n') + 1);
        for (const QByteArray& line : output.trimmed().split('\n')) {
            QVERIFY2(!line.startsWith("L "), line.constData());
            ++changes;
            const QByteArray id = line.mid(2, 16);
            if (line.startsWith("D "))
                left.remove(id);
            else
                names.insert(id, line.mid(19));
        }
        QVERIFY(isWellFormed(contentOf(library)));
        QVERIFY(isWellFormed(contentOf(library + ".melodrift-backup")));
        unfinished += QFile::exists(library + ".melodrift-journal");
        temporaries += !QDir(folder.path()).entryList({".melodrift-*"}, QDir::Files | QDir::Hidden).isEmpty();

        const LibraryCalls::Reading reading = LibraryCalls::read(library);
        QVERIFY(reading.count == left.size() || reading.count == left.size() - 1);
        QSet<QByteArray> there;
        int unexpected = 0;
        for (int track = 0; track < reading.count; ++track) {
            const QByteArray id = reading.records[track].persistentId;
            QVERIFY(left.contains(id));
            there.insert(id);
            unexpected += names.value(id) != reading.records[track].name;
            QVERIFY(reading.records[track].location);
            names.insert(id, reading.records[track].name);
        }
        QVERIFY(unexpected <= 1 - (left.size() - there.size()));
        left = there;
        closeITunesLibrary();
        // What the journal held is in the file now, and nothing is left beside it.
        QCOMPARE(LibraryCalls::read(library).count, left.size());
        closeITunesLibrary();
        const QByteArray written = contentOf(library);
        QVERIFY(isWellFormed(written));
        QCOMPARE(written.count("<key>Persistent ID</key>"), left.size());
        QCOMPARE(written.count("<key>Track ID</key>"), 2 * left.size());
        QVERIFY(!QFile::exists(library + ".melodrift-journal"));
    }
    // New writings take away what the killed ones left.
    LibraryCalls::read(library);
    for (int song = 0; song < 3; ++song) {
        LibraryCalls::Edit edit;
        QCOMPARE(LibraryCalls::edit(Fixtures::itunesTrack(song).persistentId, edit), 0);
    }
    closeITunesLibrary();
    QVERIFY(QDir(folder.path()).entryList({".melodrift-*"}, QDir::Files | QDir::Hidden).isEmpty());
    for (int song = 0; song < 3; ++song)
        QVERIFY(AudioFile::properties(folder.filePath(QString("song%1.mp3").arg(song))).duration > 2900);
    qInfo("%d answered changes; %d of %d kills left a journal, %d came in the middle of a writing", changes,
          unfinished, kills, temporaries);
    QVERIFY(unfinished > kills / 4);
    QVERIFY(temporaries > 0);
}

QTEST_GUILESS_MAIN(TestLibraryKill)
#include "tst_librarykill.moc"
