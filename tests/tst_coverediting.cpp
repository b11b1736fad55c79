#include "audiofile.h"
#include "common/qimagewidget.h"
#include "fixtures.h"
#include "guidriver.h"
#include "loggedlines.h"
#include "songpanelfixture.h"

#include <QLineEdit>
#include <QSignalSpy>
#include <QtTest>

#include <functional>

/// Choosing a cover in the panel of one song.
class TestCoverEditing : public SongPanelFixture
{
    Q_OBJECT

private slots:
    void initTestCase() { start(); }
    void init() { prepare(); }
    void cleanup() { clear(); }

    void applyWithoutACoverTakesThePictureOut();
    void aChosenCoverIsShownAtOnceAndWrittenByApply();
    void aCoverOutlivesCancelAndSong();
    void whatIsNeitherJpegNorPngIsEmbeddedAsPng_data();
    void whatIsNeitherJpegNorPngIsEmbeddedAsPng();
    void jpegAndPngAreEmbeddedAsTheyAre();
    void whatIsNoPictureIsNotTaken_data();
    void whatIsNoPictureIsNotTaken();
    void whatIsTooLargeForTheFileIsNotTaken();
    void aChooserThatOutlivesItsSongChangesNothing();
    void theCoverIsClickableInEditModeOnly();
    void aCancelledChooserChangesNothing();

private:
    QVector<FootText> toldWhile(const std::function<void()>& act) const
    {
        QVector<FootText> told;
        const auto connection = connect(m_panel.get(), &MusicDetailedInfoWidget::emitTold,
                                        [&told](const FootText& text) { told.append(text); });
        act();
        disconnect(connection);
        return told;
    }
};

void TestCoverEditing::applyWithoutACoverTakesThePictureOut()
{
    const QString cover = m_song->localInfo->coverPath;
    QVERIFY(!AudioFile::read(m_song->localInfo->filePath).picture.isEmpty());
    click("m_btnEdit");
    click("m_btnApply");
    QVERIFY(AudioFile::read(m_song->localInfo->filePath).picture.isEmpty());
    QCOMPARE(m_song->localInfo->coverPath, cover); // the song keeps it until files are read again
}

void TestCoverEditing::aChosenCoverIsShownAtOnceAndWrittenByApply()
{
    QSignalSpy covered(m_panel.get(), SIGNAL(emitMusicCoverHasChanged()));
    const QString red = picture(QStringLiteral("red.png"), QColor(220, 20, 30));
    click("m_btnEdit");
    choose(red);
    const QPoint middle = child<QImageWidget>("currentImgWidget")->geometry().center();
    QCOMPARE(m_panel->grab().toImage().pixelColor(middle), QColor(220, 20, 30));
    QVERIFY(m_song->localInfo->coverPath != red);
    click("m_btnApply");
    QCOMPARE(AudioFile::read(m_song->localInfo->filePath).picture, Fixtures::readBytes(red));
    QCOMPARE(m_song->localInfo->coverPath, red);
    QCOMPARE(m_song->localInfo->cover->toImage().pixelColor(5, 5), QColor(220, 20, 30));
    QCOMPARE(m_panel->grab().toImage().pixelColor(middle), QColor(220, 20, 30));
    QCOMPARE(covered.size(), 1);
    click("m_btnEdit");
    click("m_btnApply");
    QVERIFY(AudioFile::read(m_song->localInfo->filePath).picture.isEmpty()); // used once
    QCOMPARE(covered.size(), 1);
}

/// What was chosen waits for the next apply, whichever song that is for.
void TestCoverEditing::aCoverOutlivesCancelAndSong()
{
    const QString red = picture(QStringLiteral("red2.png"), QColor(220, 20, 30));
    click("m_btnEdit");
    choose(red);
    click("m_btnCancel");
    QMusicInfo other;
    other.localInfo = std::make_unique<LocalMusicInfo>();
    other.localInfo->filePath = Fixtures::copyTone("flac", m_folder.path());
    m_panel->SetMusicDetailedInfo(&other);
    click("m_btnEdit");
    const QPoint middle = child<QImageWidget>("currentImgWidget")->geometry().center();
    QCOMPARE(m_panel->grab().toImage().pixelColor(middle), QColor(220, 20, 30)); // nothing is written unseen
    click("m_btnApply");
    QCOMPARE(AudioFile::read(other.localInfo->filePath).picture, Fixtures::readBytes(red));
    m_panel->SetMusicDetailedInfo(nullptr);
}

void TestCoverEditing::whatIsNeitherJpegNorPngIsEmbeddedAsPng_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QByteArray>("format");
    QTest::newRow("xpm") << "cover.xpm" << QByteArray("XPM");
    QTest::newRow("a bitmap under another name") << "cover.jpg" << QByteArray("BMP");
}

void TestCoverEditing::whatIsNeitherJpegNorPngIsEmbeddedAsPng()
{
    QFETCH(QString, name);
    QFETCH(QByteArray, format);
    QImage drawn = Fixtures::plain(40, 30, QColor(220, 20, 30));
    drawn.setPixelColor(3, 7, QColor(10, 200, 90));
    const QString path = Fixtures::savePicture(drawn, m_folder.filePath(name), format.constData());
    click("m_btnEdit");
    choose(path);
    click("m_btnApply");
    const QByteArray embedded = AudioFile::read(m_song->localInfo->filePath).picture;
    QVERIFY(embedded.startsWith("\x89PNG\r\n\x1A\n"));
    QCOMPARE(Fixtures::pixels(QImage::fromData(embedded)), Fixtures::pixels(drawn));
    QCOMPARE(Fixtures::readBytes(m_song->localInfo->coverPath), embedded);
    QCOMPARE(Fixtures::pixels(*m_song->localInfo->cover), Fixtures::pixels(drawn));
    QVERIFY(QFile::exists(path));
}

void TestCoverEditing::jpegAndPngAreEmbeddedAsTheyAre()
{
    const QByteArray bytes = Fixtures::jpeg(30, 20, 6);
    const QString jpeg = Fixtures::saveBytes(bytes, m_folder.filePath("named.png"));
    click("m_btnEdit");
    choose(jpeg);
    click("m_btnApply");
    QCOMPARE(AudioFile::read(m_song->localInfo->filePath).picture, bytes);
    QCOMPARE(m_song->localInfo->coverPath, jpeg);
}

void TestCoverEditing::whatIsNoPictureIsNotTaken_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("text") << QByteArray("No picture at all");
    QTest::newRow("nothing") << QByteArray();
    QTest::newRow("the start of a PNG") << QByteArray("\x89PNG\r\n\x1A\n");
    QTest::newRow("the start of an XPM") << QByteArray("/* XPM */\nstatic char* x[] = {\n\"40 30 2 1\",");
}

void TestCoverEditing::whatIsNoPictureIsNotTaken()
{
    QFETCH(QByteArray, bytes);
    const QString red = picture(QStringLiteral("before.png"), QColor(220, 20, 30));
    click("m_btnEdit");
    choose(red);
    const LoggedLines lines;
    const QVector<FootText> told =
        toldWhile([&] { choose(Fixtures::saveBytes(bytes, m_folder.filePath("broken.png"))); });
    QCOMPARE(LoggedLines::take().filter("broken.png").size(), 1);
    QCOMPARE(told.size(), 1);
    QVERIFY(told.first().failed);
    QCOMPARE(told.first().text,
             QString("\"broken.png\" is not taken as the cover: it holds no picture that can be shown."));
    const QPoint middle = child<QImageWidget>("currentImgWidget")->geometry().center();
    QCOMPARE(m_panel->grab().toImage().pixelColor(middle), QColor(220, 20, 30));
    click("m_btnApply");
    QCOMPARE(AudioFile::read(m_song->localInfo->filePath).picture, Fixtures::readBytes(red));
}

void TestCoverEditing::whatIsTooLargeForTheFileIsNotTaken()
{
    constexpr int megabyte = 1024 * 1024;
    m_song->localInfo->filePath = Fixtures::copyTone("flac", m_folder.path(), "large");
    QByteArray bytes = Fixtures::jpeg(40, 40, 2);
    const QByteArray small = bytes.append(15 * megabyte, 'x');
    click("m_btnEdit");
    QVERIFY(toldWhile([&] { choose(Fixtures::saveBytes(small, m_folder.filePath("small.jpg"))); }).isEmpty());
    const QString large = Fixtures::saveBytes(bytes.append(megabyte, 'x'), m_folder.filePath("large.jpg"));
    const QVector<FootText> told = toldWhile([&] { choose(large); });
    QCOMPARE(told.size(), 1);
    QCOMPARE(told.first().text,
             QString("\"large.jpg\" is not taken as the cover: it is too large, the song's "
                     "file takes a picture of 15.9 MB at most."));
    click("m_btnApply");
    QCOMPARE(AudioFile::read(m_song->localInfo->filePath).picture, small);
}

/// As when a mode switch that was begun before empties the lists meanwhile.
void TestCoverEditing::aChooserThatOutlivesItsSongChangesNothing()
{
    const QString red = picture(QStringLiteral("late.png"), QColor(220, 20, 30));
    click("m_btnEdit");
    m_dialogs->expect([&](QWidget* dialog) {
        m_panel->SetMusicDetailedInfo(nullptr);
        dialog->findChild<QLineEdit*>("fileNameEdit")->setText(red);
        QMetaObject::invokeMethod(dialog, "accept");
    });
    QTest::mouseClick(child<QImageWidget>("currentImgWidget"), Qt::LeftButton);
    m_panel->SetMusicDetailedInfo(m_song.get());
    click("m_btnEdit");
    click("m_btnApply");
    QVERIFY(m_song->localInfo->coverPath != red);
    QVERIFY(AudioFile::read(m_song->localInfo->filePath).picture.isEmpty());
}

void TestCoverEditing::theCoverIsClickableInEditModeOnly()
{
    auto* cover = child<QImageWidget>("currentImgWidget");
    QVERIFY(!cover->isEnabled());
    click("m_btnEdit");
    QVERIFY(cover->isEnabled());
    click("m_btnCancel");
    QVERIFY(!cover->isEnabled());
    click("m_btnEdit");
    click("m_btnApply");
    QVERIFY(!cover->isEnabled());
    QTest::mouseClick(cover, Qt::LeftButton);
    QVERIFY(!QApplication::activeModalWidget());
}

void TestCoverEditing::aCancelledChooserChangesNothing()
{
    click("m_btnEdit");
    auto* cover = child<QImageWidget>("currentImgWidget");
    const QImage before = cover->grab().toImage();
    m_dialogs->expect([](QWidget* dialog) { dialog->close(); });
    QTest::mouseClick(cover, Qt::LeftButton);
    QCOMPARE(cover->grab().toImage(), before);
    click("m_btnApply");
    QVERIFY(AudioFile::read(m_song->localInfo->filePath).picture.isEmpty());
}

QTEST_MAIN(TestCoverEditing)
#include "tst_coverediting.moc"
