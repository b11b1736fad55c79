#include "audiocore/tagitem.h"
#include "audiofile.h"
#include "common/qimagebutton.h"
#include "common/qimagewidget.h"
#include "common/retractlabel.h"
#include "fixtures.h"
#include "guidriver.h"
#include "identifyserver.h"
#include "identifythread.h"
#include "latency.h"
#include "loggedlines.h"
#include "mainwindow.h"
#include "musicdetailedinfowidget.h"
#include "songfixtures.h"
#include "startup.h"

#include <QComboBox>
#include <QDir>
#include <QLineEdit>
#include <QMovie>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>
#include <QUrl>

#include <limits>

namespace {
/// How long a transfer waits for a server that says nothing.
constexpr qint64 serverMilliseconds = 30000;
} // namespace

/// The identify button, from the click to the tags in the file, over services on this machine.
class TestIdentifyPanel : public QObject
{
    Q_OBJECT

public:
    static void initMain() { Startup::beforeApplication(); }

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void identifyingLocksWhatItShould();
    void resultsFillTheEditorsAndApplyWritesThem();
    void anITunesTrackIsIdentifiedByItsLocation();
    void aGenreOutOfTheListIsOther();
    void whatIsNotFoundStays();
    void anEmptyResultClearsNothing();
    void unknownElementsAreSkipped();
    void failureSaysSoAndKeepsTheEditors();
    void cancelEndsItWithoutAWord();
    void aLateResultStillFillsTheEditors();
    void whatIsFoundForAnotherSongIsDropped();
    void anIdentifiedCoverIsForItsSongAlone();
    void resultsOnTheirWayLockNothingForAnotherSong_data();
    void resultsOnTheirWayLockNothingForAnotherSong();
    void anotherSongIsNotIdentifiedAgain();
    void coversGetNumbersOfTheirOwn();
    void closingDoesNotWaitForTheServer();
    void aHundredCancellations();
    void closingTheProgramDoesNotWaitForTheServer();
    void aLongPathIsIdentified();
    void aPathTooLongFailsWithAReason();

private:
    template <typename T>
    T* child(const char* name) const
    {
        return m_panel->findChild<T*>(name);
    }
    QString typed(const char* editor) const { return child<QLineEdit>(editor)->text(); }
    void click(const char* button) const { QTest::mouseClick(child<QImageButton>(button), Qt::LeftButton); }
    bool identified() const;
    std::unique_ptr<QMusicInfo> songOn(const QString& path) const;

    QTemporaryDir m_folder;
    std::unique_ptr<Fixtures::ModeGuard> m_mode;
    std::unique_ptr<IdentifyServer> m_server;
    std::unique_ptr<QMusicInfo> m_song;
    std::unique_ptr<MusicDetailedInfoWidget> m_panel;
    std::unique_ptr<DialogDriver> m_dialogs;
    QStringList m_told; ///< for the foot of the window
};

void TestIdentifyPanel::initTestCase()
{
    Startup::afterApplication();
    Fixtures::genericCover();
}

void TestIdentifyPanel::init()
{
    m_mode = std::make_unique<Fixtures::ModeGuard>(true);
    m_server = std::make_unique<IdentifyServer>();
    m_server->putIntoEnvironment();
    m_dialogs = std::make_unique<DialogDriver>();
    const QString path = m_folder.filePath("song.mp3");
    QFile::remove(path);
    QFile::copy(Fixtures::tone("mp3", 12000), path);
    AudioFile::write(path, {{TAG_TITLE, "Old"}, {TAG_YEAR, "1999"}, {TAG_GENRE, "Rock"}});
    m_song = songOn(path);
    m_song->localInfo->title = QStringLiteral("Old");
    m_song->localInfo->genre = QStringLiteral("Rock");
    m_song->localInfo->year = 1999;
    m_panel = std::make_unique<MusicDetailedInfoWidget>();
    m_panel->resize(330, 572);
    m_panel->SetMusicDetailedInfo(m_song.get());
    m_told.clear();
    connect(m_panel.get(), &MusicDetailedInfoWidget::emitTold, this,
            [this](const FootText& told) { m_told.append(told.text); });
}

void TestIdentifyPanel::cleanup()
{
    m_panel.reset();
    m_dialogs.reset();
    m_server.reset();
    m_song.reset();
    m_mode.reset();
}

std::unique_ptr<QMusicInfo> TestIdentifyPanel::songOn(const QString& path) const
{
    auto song = std::make_unique<QMusicInfo>();
    song->localInfo = std::make_unique<LocalMusicInfo>();
    song->localInfo->filePath = path;
    return song;
}

/// Waits for the end of the identification.
bool TestIdentifyPanel::identified() const
{
    return QTest::qWaitFor([&] { return child<QImageButton>("m_btnApply")->isEnabled(); }, patience);
}

void TestIdentifyPanel::identifyingLocksWhatItShould()
{
    QSignalSpy forbidden(m_panel.get(), SIGNAL(emitForbidToClickView(bool)));
    m_server->setManner(IdentifyServer::AcoustId, IdentifyServer::Manner::Silent);
    click("m_btnIdentify");
    QVERIFY(child<QWidget>("m_lineTitle")->isVisible());
    QCOMPARE(typed("m_lineTitle"), QStringLiteral("Old"));
    QVERIFY(!child<QImageButton>("m_btnApply")->isEnabled());
    QCOMPARE(child<QImageButton>("m_btnApply")->accessibleName(), QStringLiteral("Identifying"));
    QVERIFY(child<QLabel>("m_labMovie")->isVisible());
    QCOMPARE(child<QLabel>("m_labMovie")->movie()->state(), QMovie::Running);
    QCOMPARE(forbidden.last().first().toBool(), true);
    QTest::keyClick(child<QWidget>("m_lineTitle"), Qt::Key_Return); // nothing to apply yet
    QVERIFY(child<QWidget>("m_lineTitle")->isVisible());
    click("m_btnCancel");
    QVERIFY(!child<QWidget>("m_lineTitle")->isVisible());
    QVERIFY(child<QLabel>("m_labMovie")->isHidden());
    QCOMPARE(child<QLabel>("m_labMovie")->movie()->state(), QMovie::NotRunning);
    QCOMPARE(forbidden.last().first().toBool(), false);
}

void TestIdentifyPanel::resultsFillTheEditorsAndApplyWritesThem()
{
    QSignalSpy forbidden(m_panel.get(), SIGNAL(emitForbidToClickView(bool)));
    click("m_btnIdentify");
    QVERIFY(identified());
    QCOMPARE(typed("m_lineTitle"), QStringLiteral("Midnight Ferry"));
    QCOMPARE(typed("m_lineArtist"), QStringLiteral("Ida Marlowe feat. The Salt Choir"));
    QCOMPARE(typed("m_lineAlbum"), QStringLiteral("Paper Lanterns"));
    QCOMPARE(typed("m_lineYear"), QStringLiteral("2012"));
    QCOMPARE(typed("m_lineTrackNo"), QStringLiteral("4"));
    QCOMPARE(child<QComboBox>("m_comboGenre")->currentText(), QStringLiteral("Pop"));
    QCOMPARE(child<QImageButton>("m_btnApply")->accessibleName(), QStringLiteral("Apply"));
    QVERIFY(child<QLabel>("m_labMovie")->isHidden());
    QCOMPARE(forbidden.last().first().toBool(), false);
    QVERIFY(m_dialogs->texts.isEmpty());
    QCOMPARE(m_told, QStringList("Identified by sound."));
    QCOMPARE(AudioFile::read(m_song->localInfo->filePath).texts.value(TAG_TITLE), QStringLiteral("Old"));

    click("m_btnApply");
    const AudioFile::Content content = AudioFile::read(m_song->localInfo->filePath);
    QCOMPARE(content.texts.value(TAG_TITLE), QStringLiteral("Midnight Ferry"));
    QCOMPARE(content.texts.value(TAG_GENRE), QStringLiteral("Pop"));
    QCOMPARE(content.texts.value(TAG_YEAR), QStringLiteral("2012"));
    QCOMPARE(content.picture, IdentifyServer::picture());
    QCOMPARE(child<QImageButton>("m_btnIdentify")->accessibleName(), QStringLiteral("Identify again"));
    QVERIFY(child<QImageButton>("m_btnIdentify")->isVisible());
}

void TestIdentifyPanel::anITunesTrackIsIdentifiedByItsLocation()
{
    const Fixtures::ModeGuard mode(false);
    const QString path = m_folder.filePath(QString::fromUtf8("née 100%.mp3"));
    QFile::copy(Fixtures::tone("mp3", 12000), path);
    const QByteArray location = "file://localhost" + QUrl::toPercentEncoding(path, "/");
    const auto song = Fixtures::makeSong(false);
    song->record.location = location.constData();
    m_panel->SetMusicDetailedInfo(&song->info);
    click("m_btnIdentify");
    QVERIFY(identified());
    QCOMPARE(typed("m_lineTitle"), QStringLiteral("Midnight Ferry"));
    m_panel->SetMusicDetailedInfo(nullptr);
}

void TestIdentifyPanel::aGenreOutOfTheListIsOther()
{
    m_panel->SlotReceiveIdentifyInfo({QStringLiteral("3Soundtrack")});
    QCOMPARE(child<QComboBox>("m_comboGenre")->currentText(), QStringLiteral("Other"));
    m_panel->SlotReceiveIdentifyInfo({QStringLiteral("3Classical")});
    QCOMPARE(child<QComboBox>("m_comboGenre")->currentText(), QStringLiteral("Classical"));
    m_panel->SlotReceiveIdentifyInfo({QStringLiteral("3classical")});
    QCOMPARE(child<QComboBox>("m_comboGenre")->currentText(), QStringLiteral("Other"));
}

void TestIdentifyPanel::whatIsNotFoundStays()
{
    click("m_btnEdit");
    m_panel->SlotReceiveIdentifyInfo({QStringLiteral("0New"), QStringLiteral("57")});
    QCOMPARE(typed("m_lineTitle"), QStringLiteral("New"));
    QCOMPARE(typed("m_lineTrackNo"), QStringLiteral("7"));
    QCOMPARE(typed("m_lineYear"), QStringLiteral("1999"));
    QCOMPARE(child<QComboBox>("m_comboGenre")->currentText(), QStringLiteral("Rock"));
}

void TestIdentifyPanel::anEmptyResultClearsNothing()
{
    click("m_btnEdit");
    m_panel->SlotReceiveIdentifyInfo({});
    QCOMPARE(typed("m_lineTitle"), QStringLiteral("Old"));
    QVERIFY(child<QImageButton>("m_btnApply")->isEnabled());
    click("m_btnApply");
    QCOMPARE(child<QImageButton>("m_btnIdentify")->accessibleName(), QStringLiteral("Identify again"));
}

void TestIdentifyPanel::unknownElementsAreSkipped()
{
    click("m_btnEdit");
    m_panel->SlotReceiveIdentifyInfo(
        {QString(), QStringLiteral("6x"), QStringLiteral("9x"), QStringLiteral("tx"), QStringLiteral("0")});
    QCOMPARE(typed("m_lineTitle"), QString()); // a title that is empty is one
    QCOMPARE(typed("m_lineYear"), QStringLiteral("1999"));
}

void TestIdentifyPanel::failureSaysSoAndKeepsTheEditors()
{
    QSignalSpy forbidden(m_panel.get(), SIGNAL(emitForbidToClickView(bool)));
    m_server->setManner(IdentifyServer::AcoustId, IdentifyServer::Manner::ServerError);
    bool cancelShown = true;
    m_dialogs->expect([&](QWidget* dialog) {
        cancelShown = dialog->findChild<QImageButton*>("m_btnCancel")->isVisible();
        QTest::mouseClick(dialog->findChild<QImageButton*>("m_btnType"), Qt::LeftButton);
    });
    click("m_btnIdentify");
    QTRY_COMPARE(m_dialogs->texts,
                 QStringList("Identify failed! You can edit the music information manually."));
    QVERIFY(!cancelShown);
    QVERIFY(child<QImageButton>("m_btnApply")->isEnabled());
    QVERIFY(child<QWidget>("m_lineTitle")->isVisible());
    QCOMPARE(typed("m_lineTitle"), QStringLiteral("Old"));
    QVERIFY(child<QLabel>("m_labMovie")->isHidden());
    QCOMPARE(forbidden.last().first().toBool(), false);
    QCOMPARE(m_told, QStringList("Not identified: a service refused to answer."));
}

void TestIdentifyPanel::cancelEndsItWithoutAWord()
{
    m_server->setManner(IdentifyServer::AcoustId, IdentifyServer::Manner::Silent);
    click("m_btnIdentify");
    QVERIFY(m_server->waitForRequests(IdentifyServer::AcoustId, 1));
    auto* worker = m_panel->findChild<IdentifyThread*>();
    QSignalSpy failed(worker, SIGNAL(emitFailToIdentify()));
    click("m_btnCancel");
    // Left alone, the transfer would go on for thirty seconds.
    QTRY_VERIFY(m_panel->findChildren<IdentifyThread*>().isEmpty());
    QCOMPARE(failed.size(), 1);
    QVERIFY(m_dialogs->texts.isEmpty());
    click("m_btnEdit");
    QVERIFY(child<QImageButton>("m_btnApply")->isEnabled());
    QCOMPARE(m_told, QStringList());
}

void TestIdentifyPanel::aLateResultStillFillsTheEditors()
{
    click("m_btnIdentify");
    QVERIFY(m_panel->findChild<IdentifyThread*>()->wait(patience)); // and its results are on their way
    click("m_btnCancel");
    QTRY_COMPARE(typed("m_lineTitle"), QStringLiteral("Midnight Ferry"));
    QVERIFY(!child<QWidget>("m_lineTitle")->isVisible());
    QCOMPARE(m_song->localInfo->title, QStringLiteral("Old"));
}

void TestIdentifyPanel::whatIsFoundForAnotherSongIsDropped()
{
    const auto other = songOn(Fixtures::copyTone("flac", m_folder.path()));
    other->localInfo->title = QStringLiteral("Other");
    click("m_btnIdentify");
    auto* worker = m_panel->findChild<IdentifyThread*>();
    m_panel->SetMusicDetailedInfo(other.get());
    QVERIFY(worker->isCancelled());
    click("m_btnEdit");
    emit worker->emitReturnIdentifyCover(QStringLiteral("/cover"));
    emit worker->emitReturnIdentifyInfo({QStringLiteral("0Late")});
    emit worker->emitFailToIdentify();
    QCOMPARE(typed("m_lineTitle"), QStringLiteral("Other"));
    QVERIFY(m_dialogs->texts.isEmpty());
    click("m_btnApply");
    QVERIFY(other->localInfo->coverPath.isEmpty());
    m_panel->SetMusicDetailedInfo(nullptr);
}

void TestIdentifyPanel::anIdentifiedCoverIsForItsSongAlone()
{
    const auto other = songOn(Fixtures::copyTone("flac", m_folder.path()));
    click("m_btnEdit");
    m_panel->SlotReceiveIdentifyCover(QStringLiteral("/cover"));
    click("m_btnCancel");
    m_panel->SetMusicDetailedInfo(other.get());
    click("m_btnEdit");
    click("m_btnApply");
    QVERIFY(other->localInfo->coverPath.isEmpty());
    m_panel->SetMusicDetailedInfo(nullptr);
}

void TestIdentifyPanel::resultsOnTheirWayLockNothingForAnotherSong_data()
{
    QTest::addColumn<bool>("anySong");
    QTest::newRow("another song") << true;
    QTest::newRow("no song") << false;
}

void TestIdentifyPanel::resultsOnTheirWayLockNothingForAnotherSong()
{
    QFETCH(bool, anySong);
    const auto other = songOn(Fixtures::copyTone("flac", m_folder.path()));
    other->localInfo->title = QStringLiteral("Other");
    QSignalSpy forbidden(m_panel.get(), SIGNAL(emitForbidToClickView(bool)));
    click("m_btnIdentify");
    QVERIFY(m_panel->findChild<IdentifyThread*>()->wait(patience));
    m_panel->SetMusicDetailedInfo(anySong ? other.get() : nullptr);
    QTRY_VERIFY(m_panel->findChildren<IdentifyThread*>().isEmpty());
    QCOMPARE(forbidden.last().first().toBool(), false);
    QVERIFY(child<QImageButton>("m_btnApply")->isEnabled());
    QVERIFY(child<QLabel>("m_labMovie")->isHidden());
    QVERIFY(m_dialogs->texts.isEmpty());
    m_panel->SetMusicDetailedInfo(other.get());
    click("m_btnEdit");
    QCOMPARE(typed("m_lineTitle"), QStringLiteral("Other"));
    m_panel->SetMusicDetailedInfo(nullptr);
}

void TestIdentifyPanel::anotherSongIsNotIdentifiedAgain()
{
    click("m_btnEdit");
    m_panel->SlotReceiveIdentifyInfo({});
    click("m_btnApply");
    const auto other = songOn(m_folder.filePath("other"));
    m_panel->SetMusicDetailedInfo(other.get());
    QCOMPARE(child<QImageButton>("m_btnIdentify")->accessibleName(), QStringLiteral("Identify"));
    m_panel->SetMusicDetailedInfo(nullptr);
}

void TestIdentifyPanel::coversGetNumbersOfTheirOwn()
{
    QStringList covers;
    for (int run = 0; run < 2; ++run) {
        IdentifyThread worker;
        QSignalSpy cover(&worker, SIGNAL(emitReturnIdentifyCover(QString)));
        QSignalSpy info(&worker, SIGNAL(emitReturnIdentifyInfo(QStringList)));
        worker.ReturnIdentifyInfo(m_song->localInfo->filePath);
        worker.start();
        QVERIFY(worker.wait(patience)); // spies may miss a signal of another thread while they wait for it
        QCOMPARE(info.size(), 1);
        QCOMPARE(cover.size(), 1);
        covers.append(cover.first().first().toString());
        QCOMPARE(Fixtures::readBytes(covers.last()), IdentifyServer::picture());
        const QStringList elements = info.first().first().toStringList();
        QCOMPARE(elements.first(), QStringLiteral("0Midnight Ferry"));
        QCOMPARE(elements.last(), QStringLiteral("54"));
    }
    const QString prefix = QDir::tempPath() + QLatin1String("localImage/tempstr");
    QVERIFY(covers.first().startsWith(prefix));
    const int first = covers.first().mid(prefix.size()).toInt();
    QVERIFY(first >= 10000);
    QCOMPARE(covers.last(), prefix + QString::number(first + 1));
}

void TestIdentifyPanel::closingDoesNotWaitForTheServer()
{
    m_server->setManner(IdentifyServer::AcoustId, IdentifyServer::Manner::Silent);
    int runs = 0;
    const qint64 milliseconds = shortestOfThree([&] {
        m_panel = std::make_unique<MusicDetailedInfoWidget>();
        m_panel->SetMusicDetailedInfo(m_song.get());
        click("m_btnIdentify");
        if (!m_server->waitForRequests(IdentifyServer::AcoustId, ++runs))
            return std::numeric_limits<qint64>::max();
        return millisecondsOf([this] { m_panel.reset(); });
    });
    qInfo("%lld ms", milliseconds);
    QVERIFY2(milliseconds < serverMilliseconds / 3, qPrintable(QString::number(milliseconds)));
}

void TestIdentifyPanel::closingTheProgramDoesNotWaitForTheServer()
{
    m_server->setManner(IdentifyServer::AcoustId, IdentifyServer::Manner::Silent);
    int runs = 0;
    const qint64 milliseconds = shortestOfThree([&] {
        auto window = std::make_unique<MainWindow>();
        window->show();
        auto* panel = window->findChild<MusicDetailedInfoWidget*>();
        panel->SetMusicDetailedInfo(m_song.get());
        panel->SlotOnBtnIdentify();
        if (!m_server->waitForRequests(IdentifyServer::AcoustId, ++runs))
            return std::numeric_limits<qint64>::max();
        return millisecondsOf([&window] {
            window->close();
            window.reset();
        });
    });
    qInfo("%lld ms", milliseconds);
    QVERIFY2(milliseconds < serverMilliseconds / 3, qPrintable(QString::number(milliseconds)));
}

void TestIdentifyPanel::aHundredCancellations()
{
    m_server->setManner(IdentifyServer::AcoustId, IdentifyServer::Manner::Silent);
    for (int run = 0; run < 100; ++run) {
        click("m_btnIdentify");
        QTest::qWait(run % 7);
        click("m_btnCancel");
    }
    // They go by themselves.
    QTRY_VERIFY(m_panel->findChildren<IdentifyThread*>().isEmpty());
    QVERIFY(m_dialogs->texts.isEmpty());
}

void TestIdentifyPanel::aLongPathIsIdentified()
{
    QString path = m_folder.path();
    while (path.size() < 1100)
        path += '/' + QString(100, QLatin1Char('d'));
    QVERIFY(QDir().mkpath(path));
    path += QLatin1String("/song.mp3");
    QVERIFY(QFile::copy(Fixtures::tone("mp3", 12000), path));
    IdentifyThread worker;
    QSignalSpy info(&worker, SIGNAL(emitReturnIdentifyInfo(QStringList)));
    worker.ReturnIdentifyInfo(path);
    worker.start();
    QVERIFY(worker.wait(patience));
    QCOMPARE(info.size(), 1);
}

void TestIdentifyPanel::aPathTooLongFailsWithAReason()
{
    const LoggedLines log;
    IdentifyThread worker;
    QSignalSpy failed(&worker, SIGNAL(emitFailToIdentify()));
    worker.ReturnIdentifyInfo(QString(5000, QLatin1Char('x')));
    worker.start();
    QVERIFY(worker.wait(patience));
    QCOMPARE(failed.size(), 1);
    QCOMPARE(LoggedLines::take().size(), 1);
}

QTEST_MAIN(TestIdentifyPanel)
#include "tst_identifypanel.moc"
