// What a cancellation means at each moment of an identifier's life.
#include "audiofile.h"
#include "identify/identifyjob.h"

#include <QtTest>

#include <new>
#include <stdexcept>
#include <thread>

using audiocore::Cancellation;
using audiocore::Identification;
using audiocore::IdentifyJob;

namespace {
/// Work that finds something at once, unless it is cancelled.
Identification quickWork(const std::string&, const Cancellation& cancellation)
{
    Identification found;
    found.status = cancellation.isCancelled() ? IDENTIFY_CANCELLED : IDENTIFY_FOUND;
    return found;
}

int statusAfterRun(IdentifyJob& job)
{
    job.run();
    return job.found().status;
}
} // namespace

class TestIdentifyJob : public QObject
{
    Q_OBJECT

private slots:
    void aRunIsDoneWhenNobodyCancels();
    void aCancelBeforeTheFirstFileHoldsForItsRun();
    void aCancelOfAnOpenedFileHoldsForItsRun();
    void aCancelHoldsForOneRunOnly();
    void aCancelOfTheFileBeforeDoesNotHold();
    void aCancelAfterTheRunHasNoEffect();
    void aCancelOfAClosedFileHasNoEffect();
    void aCancelDuringTheRunEndsIt();
    void aRunThatEndsDespiteACancelHasNoItems();
    void closingDropsWhatWasFound();
    void aShortageOfMemoryIsAStatus();
    void anyOtherFaultIsAnother();
};

void TestIdentifyJob::aRunIsDoneWhenNobodyCancels()
{
    IdentifyJob job(quickWork);
    QCOMPARE(int(job.found().status), int(IDENTIFY_NOT_RUN));
    job.open("song");
    QCOMPARE(statusAfterRun(job), int(IDENTIFY_FOUND));
}

void TestIdentifyJob::aCancelBeforeTheFirstFileHoldsForItsRun()
{
    IdentifyJob job(quickWork);
    job.cancel();
    job.open("song");
    QCOMPARE(statusAfterRun(job), int(IDENTIFY_CANCELLED));
}

void TestIdentifyJob::aCancelOfAnOpenedFileHoldsForItsRun()
{
    IdentifyJob job(quickWork);
    job.open("song");
    job.cancel();
    QCOMPARE(statusAfterRun(job), int(IDENTIFY_CANCELLED));
}

void TestIdentifyJob::aCancelHoldsForOneRunOnly()
{
    IdentifyJob job(quickWork);
    job.open("song");
    job.cancel();
    job.run();
    QCOMPARE(statusAfterRun(job), int(IDENTIFY_FOUND));
}

void TestIdentifyJob::aCancelOfTheFileBeforeDoesNotHold()
{
    IdentifyJob job(quickWork);
    job.open("one");
    job.cancel();
    job.open("other");
    QCOMPARE(statusAfterRun(job), int(IDENTIFY_FOUND));
}

void TestIdentifyJob::aCancelAfterTheRunHasNoEffect()
{
    IdentifyJob job(quickWork);
    job.open("one");
    job.run();
    job.cancel();
    QCOMPARE(int(job.found().status), int(IDENTIFY_FOUND));
    job.open("other");
    QCOMPARE(statusAfterRun(job), int(IDENTIFY_FOUND));
}

void TestIdentifyJob::aCancelOfAClosedFileHasNoEffect()
{
    IdentifyJob job(quickWork);
    job.open("one");
    job.close();
    job.cancel();
    job.open("other");
    QCOMPARE(statusAfterRun(job), int(IDENTIFY_FOUND));
}

void TestIdentifyJob::aCancelDuringTheRunEndsIt()
{
    IdentifyJob job([&job](const std::string& path, const Cancellation& cancellation) {
        std::thread([&job] { job.cancel(); }).join();
        return quickWork(path, cancellation);
    });
    job.open("song");
    QCOMPARE(statusAfterRun(job), int(IDENTIFY_CANCELLED));
}

void TestIdentifyJob::aRunThatEndsDespiteACancelHasNoItems()
{
    IdentifyJob job([&job](const std::string&, const Cancellation&) {
        job.cancel();
        Identification found;
        found.status = IDENTIFY_FOUND;
        found.texts[TAG_TITLE] = U"Too late";
        found.picture = "picture";
        return found;
    });
    job.open("song");
    QCOMPARE(statusAfterRun(job), int(IDENTIFY_CANCELLED));
    QVERIFY(job.found().texts[TAG_TITLE].empty());
    QVERIFY(job.found().picture.empty());
}

void TestIdentifyJob::closingDropsWhatWasFound()
{
    IdentifyJob job(quickWork);
    job.open("song");
    job.run();
    job.close();
    QCOMPARE(int(job.found().status), int(IDENTIFY_NOT_RUN));
}

void TestIdentifyJob::aShortageOfMemoryIsAStatus()
{
    IdentifyJob job(
        [](const std::string&, const Cancellation&) -> Identification { throw std::bad_alloc(); });
    job.open("song");
    AudioFile::takeLog();
    QCOMPARE(statusAfterRun(job), int(IDENTIFY_NO_MEMORY));
    QCOMPARE(AudioFile::takeLog().size(), 1);
}

void TestIdentifyJob::anyOtherFaultIsAnother()
{
    IdentifyJob job([](const std::string&, const Cancellation&) -> Identification {
        throw std::out_of_range("nowhere");
    });
    job.open("song");
    AudioFile::takeLog();
    QCOMPARE(statusAfterRun(job), int(IDENTIFY_NOT_UNDERSTOOD));
    QCOMPARE(AudioFile::takeLog(), QStringList("song: is not identified: nowhere"));
}

QTEST_GUILESS_MAIN(TestIdentifyJob)
#include "tst_identifyjob.moc"
