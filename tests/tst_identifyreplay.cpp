#include "audiocore/iaudioidentifier.h"
#include "audiofile.h"
#include "common/qimagebutton.h"
#include "fixtures.h"
#include "guidriver.h"
#include "identifyserver.h"
#include "musicdetailedinfowidget.h"
#include "songfixtures.h"
#include "songs/footlines.h"
#include "startup.h"

#include <QComboBox>
#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLineEdit>
#include <QTemporaryDir>
#include <QThread>
#include <QtTest>

/// Requests and answers of the services as they document them, from the click to the filled editors.
///
/// Each file of support/replay has the song's `file` (a name, or tags; FLAC of 12 seconds), whether there is
/// a `key` and a `cover`, the `answers` to what is asked, decoded, and then what the `editors` hold and what
/// is `told`. Whatever else is asked is not found.
class TestIdentifyReplay : public QObject
{
    Q_OBJECT

public:
    static void initMain() { Startup::beforeApplication(); }

private slots:
    void initTestCase();
    void theEditorsAreFilled_data();
    void theEditorsAreFilled();

private:
    static void serve(IdentifyServer& server, const QJsonObject& replay);
    std::unique_ptr<QMusicInfo> song(const QJsonObject& file) const;

    QTemporaryDir m_folder;
};

void TestIdentifyReplay::initTestCase()
{
    Startup::afterApplication();
    Fixtures::genericCover();
    qputenv("XDG_CONFIG_HOME", "/nowhere"); // with a key of the user's
}

void TestIdentifyReplay::theEditorsAreFilled_data()
{
    QTest::addColumn<QJsonObject>("replay");
    const QDir folder(MELODRIFT_REPLAY);
    const QStringList names = folder.entryList({"*.json"}, QDir::Files);
    QVERIFY(!names.isEmpty());
    for (const QString& name : names) {
        const QJsonObject replay =
            QJsonDocument::fromJson(Fixtures::readBytes(folder.filePath(name))).object();
        QVERIFY2(replay.contains("editors"), qPrintable(name));
        QTest::newRow(qPrintable(name)) << replay;
    }
}

void TestIdentifyReplay::serve(IdentifyServer& server, const QJsonObject& replay)
{
    QHash<QByteArray, QByteArray> answers;
    if (!replay["key"].toBool()) // the build may have one
        answers["/v2/lookup"] = IdentifyServer::emptyLookupAnswer();
    for (const QJsonValue& pair : replay["answers"].toArray())
        answers[pair["asks"].toString().toUtf8()] = QJsonDocument(pair["answer"].toObject()).toJson();
    server.setReplay(answers);
    if (!replay["cover"].toBool())
        server.setManner(IdentifyServer::CoverArt, IdentifyServer::Manner::NotFound);
    server.putIntoEnvironment();
    if (!replay["key"].toBool())
        qunsetenv("MELODRIFT_ACOUSTID_KEY");
}

std::unique_ptr<QMusicInfo> TestIdentifyReplay::song(const QJsonObject& file) const
{
    const QString path = m_folder.filePath(file["name"].toString("song") + ".flac");
    QFile::remove(path);
    QFile::copy(Fixtures::tone("flac", 12000), path);
    auto song = std::make_unique<QMusicInfo>();
    song->localInfo = std::make_unique<LocalMusicInfo>();
    song->localInfo->filePath = path;
    song->localInfo->title = file["title"].toString();
    song->localInfo->artist = file["artist"].toString();
    song->localInfo->album = file["album"].toString();
    song->localInfo->year = file["year"].toString().toUInt();
    QHash<int, QString> tags;
    const QHash<int, QString> names = {
        {TAG_TITLE, "title"}, {TAG_ARTIST, "artist"}, {TAG_ALBUM, "album"}, {TAG_YEAR, "year"}};
    for (auto name = names.begin(); name != names.end(); ++name)
        if (file.contains(name.value()))
            tags[name.key()] = file[name.value()].toString();
    if (!tags.isEmpty())
        AudioFile::write(path, tags);
    return song;
}

void TestIdentifyReplay::theEditorsAreFilled()
{
    QFETCH(QJsonObject, replay);
    const Fixtures::ModeGuard mode(true);
    const DialogDriver dialogs;
    IdentifyServer server;
    serve(server, replay);
    const auto identified = song(replay["file"].toObject());
    MusicDetailedInfoWidget panel;
    panel.resize(330, 572);
    QString told;
    connect(&panel, &MusicDetailedInfoWidget::emitTold, this,
            [&told](const FootText& text) { told = text.text; });
    panel.SetMusicDetailedInfo(identified.get());
    QTest::mouseClick(panel.findChild<QImageButton*>("m_btnIdentify"), Qt::LeftButton);
    QTRY_VERIFY(!told.isEmpty());

    const QJsonObject editors = replay["editors"].toObject();
    const auto typed = [&panel](const char* editor) { return panel.findChild<QLineEdit*>(editor)->text(); };
    QCOMPARE(typed("m_lineTitle"), editors["title"].toString());
    QCOMPARE(typed("m_lineArtist"), editors["artist"].toString());
    QCOMPARE(typed("m_lineAlbum"), editors["album"].toString());
    QCOMPARE(typed("m_lineYear"), editors["year"].toString());
    QCOMPARE(typed("m_lineTrackNo"), editors["track"].toString());
    QCOMPARE(panel.findChild<QComboBox*>("m_comboGenre")->currentText(), editors["genre"].toString());
    const bool offered = !replay["key"].toBool() && !IdentifiesBySound();
    QCOMPARE(told, replay["told"].toString() + (offered ? ' ' + FootLines::keyOffer() : QString()));
    QVERIFY(!replay["cover"].toBool() || !server.requests(IdentifyServer::CoverArt).isEmpty());
    QTRY_VERIFY(panel.findChildren<QThread*>().isEmpty());
    panel.SetMusicDetailedInfo(nullptr);
}

QTEST_MAIN(TestIdentifyReplay)
#include "tst_identifyreplay.moc"
