#include "audiofile.h"
#include "common/overlaybutton.h"
#include "common/textlink.h"
#include "fixtures.h"
#include "guidriver.h"
#include "songpanelfixture.h"
#include "songs/songediting.h"

#include <QComboBox>
#include <QLineEdit>
#include <QtTest>

/// What the editor of a song offers to keep, and what an apply then leaves alone.
class TestKeepOffers : public SongPanelFixture
{
    Q_OBJECT

private slots:
    void initTestCase() { start(); }
    void init() { prepare(); }
    void cleanup() { clear(); }

    void aKeptCoverStaysInTheFile();
    void whatTheFileHoldsNowIsKept();
    void aCoverThatTheFileLostIsWrittenBack();
    void keepingCanBeTakenBack();
    void anotherPictureTakesItsPlaceAndGivesItBack();
    void aCoverIsKeptForItsSongAlone();
    void cancelShowsTheCoverOfTheFile();
    void withoutACoverNothingIsOffered();
    void whereTheCoverStaysAnywayNothingIsOffered();
    void aGenreOutOfTheListIsKept();
    void aGenreOfTheListIsKept();
    void theBoxHasItsOwnItemsAfterwards_data();
    void theBoxHasItsOwnItemsAfterwards();
    void noGenreIsNotOffered();
    void whatTheBoxShowsIsNotCutOff();
    void theKeyboardReachesBoth();
    void afterAFailureEnterAppliesWhatWasTypedAlone();
    void afterAFailureEnterAppliesAChosenGenre();

private:
    void edit() { click("m_btnEdit"); }
    void apply() { click("m_btnApply"); }
    OverlayButton* button() const { return child<OverlayButton>("m_btnKeepCover"); }
    TextLink* link() const { return child<TextLink>("m_linkKeepGenre"); }
    QComboBox* box() const { return child<QComboBox>("m_comboGenre"); }
    LocalMusicInfo& local() const { return *m_song->localInfo; }
    QByteArray picture() const { return AudioFile::read(local().filePath).picture; }
    QColor shownCover() const
    {
        const QPoint middle = child<QImageWidget>("currentImgWidget")->geometry().center();
        return m_panel->grab().toImage().pixelColor(middle);
    }
    void failIdentification();
};

void TestKeepOffers::aKeptCoverStaysInTheFile()
{
    const QByteArray cover = picture();
    QVERIFY(!button()->isVisible());
    edit();
    QVERIFY(button()->isVisible());
    QCOMPARE(button()->text(), QStringLiteral("Keep this cover"));
    QVERIFY(!button()->isChecked());
    QTest::mouseClick(button(), Qt::LeftButton);
    QVERIFY(button()->isChecked());
    type("m_lineTitle", QStringLiteral("Quay"));
    apply();
    QVERIFY(!button()->isVisible());
    QCOMPARE(picture(), cover);
    QCOMPARE(AudioFile::read(local().filePath).texts.value(TAG_TITLE), QStringLiteral("Quay"));
    edit();
    QVERIFY(!button()->isChecked()); // used once, as a chosen one
}

void TestKeepOffers::whatTheFileHoldsNowIsKept()
{
    const QByteArray newer = Fixtures::jpeg(60, 50, 4);
    edit();
    QTest::mouseClick(button(), Qt::LeftButton);
    QCOMPARE(AudioFile::write(local().filePath, {}, &newer), 0); // by another program
    apply();
    QCOMPARE(picture(), newer);
}

void TestKeepOffers::aCoverThatTheFileLostIsWrittenBack()
{
    const QByteArray cover = picture();
    edit();
    apply();
    QVERIFY(picture().isEmpty());
    edit();
    QTest::mouseClick(button(), Qt::LeftButton);
    apply();
    QCOMPARE(picture(), cover);
}

void TestKeepOffers::keepingCanBeTakenBack()
{
    edit();
    QTest::mouseClick(button(), Qt::LeftButton);
    QTest::mouseClick(button(), Qt::LeftButton);
    QVERIFY(!button()->isChecked());
    apply();
    QVERIFY(picture().isEmpty());
}

void TestKeepOffers::anotherPictureTakesItsPlaceAndGivesItBack()
{
    const QByteArray cover = picture();
    const QColor own = shownCover();
    const QColor red(220, 20, 30);
    const QString chosen = SongPanelFixture::picture(QStringLiteral("red.png"), red);
    edit();
    QTest::mouseClick(button(), Qt::LeftButton);
    choose(chosen);
    QVERIFY(!button()->isChecked());
    QCOMPARE(button()->text(), QStringLiteral("Keep the old cover"));
    QCOMPARE(shownCover(), red);
    QTest::mouseClick(button(), Qt::LeftButton);
    QVERIFY(button()->isChecked());
    QCOMPARE(button()->text(), QStringLiteral("Keep this cover"));
    QCOMPARE(shownCover(), own);
    apply();
    QCOMPARE(picture(), cover);
}

void TestKeepOffers::aCoverIsKeptForItsSongAlone()
{
    edit();
    QTest::mouseClick(button(), Qt::LeftButton);
    click("m_btnCancel");
    edit();
    QVERIFY(button()->isChecked()); // for this song it stays chosen
    QMusicInfo other;
    other.localInfo = std::make_unique<LocalMusicInfo>();
    other.localInfo->filePath = Fixtures::copyTone("flac", m_folder.path());
    m_panel->SetMusicDetailedInfo(&other);
    edit();
    QVERIFY(!button()->isVisible());
    apply();
    QVERIFY(AudioFile::read(other.localInfo->filePath).picture.isEmpty());
    m_panel->SetMusicDetailedInfo(nullptr);
}

void TestKeepOffers::cancelShowsTheCoverOfTheFile()
{
    const QColor own = shownCover();
    edit();
    choose(SongPanelFixture::picture(QStringLiteral("red2.png"), QColor(220, 20, 30)));
    QVERIFY(shownCover() != own);
    click("m_btnCancel");
    QCOMPARE(shownCover(), own);
}

void TestKeepOffers::withoutACoverNothingIsOffered()
{
    local().coverPath.clear();
    edit();
    QVERIFY(!button()->isVisible());
    local().coverPath = Fixtures::saveBytes("no picture", m_folder.filePath("nothing"));
    m_panel->SetMusicDetailedInfo(m_song.get());
    edit();
    QVERIFY(!button()->isVisible());
}

void TestKeepOffers::whereTheCoverStaysAnywayNothingIsOffered()
{
    m_mode.reset(); // one guard at a time
    m_mode = std::make_unique<Fixtures::ModeGuard>(false);
    m_song->coverPath = local().coverPath;
    m_panel->SetMusicDetailedInfo(m_song.get());
    edit();
    QVERIFY(!button()->isVisible());
}

void TestKeepOffers::aGenreOutOfTheListIsKept()
{
    local().genre = QStringLiteral("Électro");
    edit();
    QVERIFY(link()->isVisible());
    QCOMPARE(link()->text(), QStringLiteral("Keep Électro"));
    QTest::mouseClick(link(), Qt::LeftButton);
    QCOMPARE(box()->currentText(), QStringLiteral("Électro"));
    QVERIFY(!link()->isVisible());
    apply();
    QCOMPARE(AudioFile::read(local().filePath).texts.value(TAG_GENRE), QStringLiteral("Électro"));
    QCOMPARE(local().genre, QStringLiteral("Électro"));
}

void TestKeepOffers::aGenreOfTheListIsKept()
{
    edit();
    QVERIFY(!link()->isVisible());
    box()->setCurrentText(QStringLiteral("Rock"));
    QVERIFY(link()->isVisible());
    QCOMPARE(link()->text(), QStringLiteral("Keep Pop"));
    QTest::mouseClick(link(), Qt::LeftButton);
    QCOMPARE(box()->currentText(), QStringLiteral("Pop"));
    QCOMPARE(box()->count(), SongEditing::genres().size());
}

void TestKeepOffers::theBoxHasItsOwnItemsAfterwards_data()
{
    QTest::addColumn<QByteArray>("end");
    QTest::newRow("apply") << QByteArray("m_btnApply");
    QTest::newRow("cancel") << QByteArray("m_btnCancel");
}

/// And shows what it showed before: the next song with a genre out of the list finds that.
void TestKeepOffers::theBoxHasItsOwnItemsAfterwards()
{
    QFETCH(QByteArray, end);
    local().genre = QStringLiteral("Jazz");
    edit();
    box()->setCurrentText(QStringLiteral("Rock"));
    QTest::mouseClick(link(), Qt::LeftButton);
    QCOMPARE(box()->count(), SongEditing::genres().size() + 1);
    click(end.constData());
    QCOMPARE(box()->count(), SongEditing::genres().size());
    QCOMPARE(box()->currentText(), QStringLiteral("Rock"));
}

void TestKeepOffers::noGenreIsNotOffered()
{
    local().genre.clear();
    edit();
    QVERIFY(!link()->isVisible());
    box()->setCurrentText(QStringLiteral("Rock"));
    QVERIFY(!link()->isVisible());
}

void TestKeepOffers::whatTheBoxShowsIsNotCutOff()
{
    local().genre = QStringLiteral("A genre with a name that is longer than the field");
    edit();
    for (const QString& genre : SongEditing::genres()) {
        box()->setCurrentText(genre);
        QTRY_VERIFY(box()->geometry().right() < link()->geometry().left());
        QVERIFY2(box()->width() >= box()->fontMetrics().horizontalAdvance(genre) + 30, qUtf8Printable(genre));
        QVERIFY(link()->geometry().right() <= child<QWidget>("gridLayoutWidget")->width());
        QVERIFY(link()->width() > 30);
    }
}

void TestKeepOffers::theKeyboardReachesBoth()
{
    local().genre = QStringLiteral("Jazz");
    edit();
    box()->setFocus();
    QTest::keyClick(box(), Qt::Key_Tab);
    QVERIFY(link()->hasFocus());
    QTest::keyClick(link(), Qt::Key_Return);
    QCOMPARE(box()->currentText(), QStringLiteral("Jazz"));
    QVERIFY(editing()); // Return was for the link
    button()->setFocus();
    QTest::keyClick(button(), Qt::Key_Space);
    QVERIFY(button()->isChecked());
}

void TestKeepOffers::failIdentification()
{
    edit();
    m_dialogs->expectButton("m_btnType");
    m_panel->SlotOnFailIdentifyTips();
    m_panel->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(m_panel.get(), patience));
}

void TestKeepOffers::afterAFailureEnterAppliesWhatWasTypedAlone()
{
    failIdentification();
    auto* title = child<QLineEdit>("m_lineTitle");
    title->setFocus();
    QTest::keyClick(title, Qt::Key_Return);
    QVERIFY(editing());
    type("m_lineTitle", QStringLiteral("Quay"));
    auto* artist = child<QLineEdit>("m_lineArtist");
    artist->setFocus();
    QTest::keyClick(artist, Qt::Key_Return);
    QVERIFY(editing()); // another editor was changed, not this one
    QTest::keyClick(title, Qt::Key_Return);
    QVERIFY(editing());
    title->setFocus();
    QTest::keyClick(title, Qt::Key_Return);
    QVERIFY(!editing());
    QCOMPARE(local().title, QStringLiteral("Quay"));
    edit(); // it is over with the edit that followed it
    QTest::keyClick(title, Qt::Key_Return);
    QVERIFY(!editing());
}

void TestKeepOffers::afterAFailureEnterAppliesAChosenGenre()
{
    failIdentification();
    box()->setFocus();
    QTest::keyClick(box(), Qt::Key_Return);
    QVERIFY(editing());
    QTest::keyClick(box(), Qt::Key_Down);
    QTest::keyClick(box(), Qt::Key_Return);
    QVERIFY(!editing());
    QCOMPARE(local().genre, QStringLiteral("Rock"));
}

QTEST_MAIN(TestKeepOffers)

#include "tst_keepoffers.moc"
