// Identifications on a machine that has no memory or no threads left.
#include "audiofile.h"
#include "fixtures.h"
#include "identify/identifyjob.h"
#include "shortage.h"
#include "testservices.h"

#include <QDir>
#include <QtTest>

using audiocore::Cancellation;
using audiocore::IdentifyJob;
using Shortage::Whose;

namespace {
std::string song()
{
    return Fixtures::tone("flac", 20000).toStdString();
}

int openFiles()
{
    return QDir("/proc/self/fd").entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot).size();
}
} // namespace

class TestIdentifyShortage : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void anAnswerThatDoesNotFitIsAStatus();
    void whicheverMemoryIsRefusedTheRunEnds();
    void withoutThreadsTheRunEnds();

private:
    int statusOfRun();

    std::unique_ptr<IdentifyServer> m_server;
    std::unique_ptr<TestServices> m_services;
    std::unique_ptr<IdentifyJob> m_job;
    std::string m_lookupAddress; ///< in place of the server's
};

void TestIdentifyShortage::init()
{
    m_server = std::make_unique<IdentifyServer>();
    m_services = std::make_unique<TestServices>(*m_server);
    m_job = std::make_unique<IdentifyJob>([this](const std::string& path, const Cancellation& cancellation) {
        audiocore::Services services = m_services->all();
        if (!m_lookupAddress.empty())
            services.addresses.acoustId = m_lookupAddress;
        return audiocore::identifyFile(path, services, cancellation);
    });
    m_job->open(song());
    m_lookupAddress.clear();
    AudioFile::takeLog();
}

int TestIdentifyShortage::statusOfRun()
{
    m_job->run();
    return m_job->found().status;
}

void TestIdentifyShortage::anAnswerThatDoesNotFitIsAStatus()
{
    m_server->setAnswer(IdentifyServer::CoverArt, IdentifyServer::picture() + QByteArray(1000000, 'x'));
    QCOMPARE(statusOfRun(), int(IDENTIFY_FOUND));
    const int files = openFiles();
    {
        const Shortage::OfMemory little(Whose::Mine, 500000);
        QCOMPARE(statusOfRun(), int(IDENTIFY_NO_MEMORY));
        QCOMPARE(Shortage::OfMemory::refused(), 1);
    }
    QCOMPARE(AudioFile::takeLog().size(), 1);
    QTRY_VERIFY(openFiles() <= files); // given up in order; the server may have closed its own end since
    QCOMPARE(statusOfRun(), int(IDENTIFY_FOUND));
}

void TestIdentifyShortage::whicheverMemoryIsRefusedTheRunEnds()
{
    QCOMPARE(statusOfRun(), int(IDENTIFY_FOUND)); // what the libraries keep for themselves is there by now
    int runs = 0;
    int refused = 1;
    for (int granted = 0; refused > 0; granted += 1 + granted / 8, ++runs) {
        AudioFile::takeLog();
        int status = IDENTIFY_NOT_RUN;
        {
            const Shortage::OfMemory little(Whose::Mine, 1, granted);
            status = statusOfRun();
            refused = Shortage::OfMemory::refused();
        }
        const QStringList log = AudioFile::takeLog();
        QVERIFY2(status == IDENTIFY_NO_MEMORY || (status == IDENTIFY_FOUND && refused <= 1),
                 qPrintable(QString("%1 after %2: %3").arg(status).arg(granted).arg(log.join('\n'))));
        QVERIFY(log.size() <= 1);
    }
    qInfo("%d runs", runs);
    QVERIFY(runs > 20);
}

/// The name server is asked on a thread that the transfer library makes.
void TestIdentifyShortage::withoutThreadsTheRunEnds()
{
    m_lookupAddress = "https://name.invalid";
    {
        const Shortage::OfThreads none;
        QCOMPARE(statusOfRun(), int(IDENTIFY_NO_CONNECTION));
    }
    QCOMPARE(AudioFile::takeLog().size(), 1);
}

QTEST_GUILESS_MAIN(TestIdentifyShortage)
#include "tst_identifyshortage.moc"
