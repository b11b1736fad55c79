#include "audiocore/tagitem.h"
#include "audiofile.h"
#include "common/qimagebutton.h"
#include "common/qimagewidget.h"
#include "common/retractlabel.h"
#include "contrast.h"
#include "fixtures.h"
#include "guidriver.h"
#include "loggedlines.h"
#include "musicdetailedinfowidget.h"
#include "songfixtures.h"
#include "songpanelfixture.h"

#include <QAbstractItemView>
#include <QComboBox>
#include <QLineEdit>
#include <QSignalSpy>
#include <QtTest>

#include <algorithm>

namespace {
/// Of what is told best from the colour that most of the picture has.
double bestContrast(const QImage& picture)
{
    QHash<QRgb, int> pixels;
    for (int y = 0; y < picture.height(); ++y)
        for (int x = 0; x < picture.width(); ++x)
            ++pixels[picture.pixel(x, y)];
    const auto fewer = [&](QRgb one, QRgb other) { return pixels[one] < pixels[other]; };
    const QList<QRgb> colours = pixels.keys();
    const QRgb ground = *std::max_element(colours.begin(), colours.end(), fewer);
    double best = 1;
    for (const QRgb colour : colours)
        best = qMax(best, contrast(colour, ground));
    return best;
}

/// What a dark desktop says of lists, boxes and menus.
void setDesktopColours(const QPalette& palette)
{
    for (const char* kind : {"QAbstractItemView", "QComboBox", "QMenu"})
        QApplication::setPalette(palette, kind);
}
} // namespace

class TestMusicDetailedInfoWidget : public SongPanelFixture
{
    Q_OBJECT

private slots:
    void initTestCase() { start(); }
    void init() { prepare(); }
    void cleanup() { clear(); }

    void startsInReadMode();
    void showsTheSongOfEitherMode_data();
    void showsTheSongOfEitherMode();
    void editorsLieOverTheLabels();
    void editorsTakeTheValuesOver();
    void aGenreOutOfTheListLeavesTheSelection();
    void theGenresAreThoseOfTheList();
    void theListOfGenresIsReadable();
    void yearAndTrackTakeFourDigits();
    void cancelWritesNothing();
    void applyWritesTheFile();
    void labelsShowWhatWasTyped();
    void anEmptyYearIsZero();
    void textsOfAnyLengthAreHandedBackWhole();
    void aDoubleClickOnEditAppliesNothing();
    void theFocusStaysInThePanel();
    void aFailedSaveKeepsTheEditAndLogs();
    void enterAppliesAndEscapeCancels();
    void enterOnTheCancelButtonCancels();
    void anotherSongEndsTheEdit();
    void noSongHidesThePanel();
    void nothingIsCutOff();
};

void TestMusicDetailedInfoWidget::startsInReadMode()
{
    QVERIFY(!editing());
    QVERIFY(child<QImageButton>("m_btnEdit")->isDefault());
    QCOMPARE(child<QImageButton>("m_btnEdit")->toolTip(), QStringLiteral("edit music information"));
    QCOMPARE(child<QImageButton>("m_btnEdit")->text(), QStringLiteral("edit"));
    QCOMPARE(child<QImageButton>("m_btnCancel")->text(), QStringLiteral("cancel"));
    QCOMPARE(child<QImageButton>("m_btnIdentify")->text(), QStringLiteral("identify"));
    QCOMPARE(child<QImageButton>("m_btnApply")->text(), QStringLiteral("apply"));
}

void TestMusicDetailedInfoWidget::showsTheSongOfEitherMode_data()
{
    QTest::addColumn<bool>("local");
    QTest::newRow("iTunes") << false;
    QTest::newRow("local") << true;
}

void TestMusicDetailedInfoWidget::showsTheSongOfEitherMode()
{
    QFETCH(bool, local);
    const Fixtures::ModeGuard mode(local);
    const auto song = Fixtures::makeSong(local);
    m_panel->SetMusicDetailedInfo(&song->info);
    QCOMPARE(shown("m_titleName"), QString::fromUtf8("Täxt"));
    QCOMPARE(shown("m_artistName"), QStringLiteral("Artist"));
    QCOMPARE(shown("m_albumName"), QStringLiteral("Album"));
    QCOMPARE(shown("m_genreName"), QStringLiteral("Genre"));
    QCOMPARE(shown("m_yearNumber"), QStringLiteral("1999"));
    QCOMPARE(shown("m_trackNoName"), QStringLiteral("7"));
    click("m_btnEdit");
    QCOMPARE(typed("m_lineTitle"), QString::fromUtf8("Täxt"));
    QCOMPARE(typed("m_lineYear"), QStringLiteral("1999"));
    QCOMPARE(typed("m_lineTrackNo"), QStringLiteral("7"));
    m_panel->SetMusicDetailedInfo(nullptr);
}

void TestMusicDetailedInfoWidget::editorsLieOverTheLabels()
{
    QHash<QString, QRect> places;
    for (const RetractLabel* label : m_panel->findChildren<RetractLabel*>())
        places.insert(label->objectName(), label->geometry());
    click("m_btnEdit");
    QVERIFY(editing());
    QCoreApplication::sendPostedEvents(nullptr, QEvent::LayoutRequest);
    const std::pair<const char*, const char*> pairs[] = {
        {"m_titleName", "m_lineTitle"}, {"m_artistName", "m_lineArtist"},
        {"m_albumName", "m_lineAlbum"}, {"m_genreName", "m_comboGenre"},
        {"m_yearNumber", "m_lineYear"}, {"m_trackNoName", "m_lineTrackNo"}};
    for (const auto& [label, editor] : pairs)
        QCOMPARE(child<QWidget>(editor)->geometry(), places.value(label));
}

void TestMusicDetailedInfoWidget::editorsTakeTheValuesOver()
{
    click("m_btnEdit");
    QCOMPARE(typed("m_lineTitle"), QStringLiteral("Harbour"));
    QCOMPARE(typed("m_lineArtist"), QStringLiteral("Ida"));
    QCOMPARE(typed("m_lineAlbum"), QStringLiteral("Lanterns"));
    QCOMPARE(child<QComboBox>("m_comboGenre")->currentText(), QStringLiteral("Pop"));
    QCOMPARE(typed("m_lineYear"), QStringLiteral("2012"));
    QCOMPARE(typed("m_lineTrackNo"), QStringLiteral("4"));
    QCOMPARE(child<QImageWidget>("currentImgWidget")->toolTip(), QStringLiteral("click to add cover"));
    QVERIFY(child<QLineEdit>("m_lineTitle")->hasFocus());
    click("m_btnCancel");
    m_song->localInfo->year = 0;
    click("m_btnEdit");
    QCOMPARE(typed("m_lineYear"), QStringLiteral("0"));
}

void TestMusicDetailedInfoWidget::aGenreOutOfTheListLeavesTheSelection()
{
    click("m_btnEdit");
    click("m_btnCancel");
    m_song->localInfo->genre = QStringLiteral("Jazz");
    click("m_btnEdit");
    QCOMPARE(child<QComboBox>("m_comboGenre")->currentText(), QStringLiteral("Pop"));
    click("m_btnApply");
    QCOMPARE(m_song->localInfo->genre, QStringLiteral("Pop"));
    QCOMPARE(AudioFile::read(m_song->localInfo->filePath).texts.value(TAG_GENRE), QStringLiteral("Pop"));
    m_song->localInfo->genre = QStringLiteral("rock"); // compared with its case
    click("m_btnEdit");
    QCOMPARE(child<QComboBox>("m_comboGenre")->currentText(), QStringLiteral("Pop"));
}

void TestMusicDetailedInfoWidget::theGenresAreThoseOfTheList()
{
    const auto* combo = child<QComboBox>("m_comboGenre");
    QStringList texts;
    for (int index = 0; index < combo->count(); ++index)
        texts.append(combo->itemText(index));
    QCOMPARE(texts, QStringList({"", "Blue", "Alternavite & Punk", "Books & Spoken", "Children's Music",
                                 "Classical", "Pop", "Rock", "Other"}));
}

/// On any desktop: its rows, and the one that is chosen.
void TestMusicDetailedInfoWidget::theListOfGenresIsReadable()
{
    for (const QPalette& desktop : {QApplication::palette(), QPalette(Qt::black)}) {
        setDesktopColours(desktop);
        prepare();
        click("m_btnEdit");
        auto* const box = child<QComboBox>("m_comboGenre");
        QTest::keyClick(box, Qt::Key_Down, Qt::AltModifier);
        const QAbstractItemView* const list = box->view();
        QVERIFY(list->isVisible());
        for (int row = 1; row < box->count(); ++row) {
            const QRect place = list->visualRect(list->model()->index(row, 0));
            const QImage shown = list->viewport()->grab(place).toImage();
            QVERIFY2(bestContrast(shown) >= 7, qPrintable(box->itemText(row)));
            QVERIFY(qGray(shown.pixel(shown.width() - 3, 3)) > 200);
        }
        box->hidePopup();
    }
    setDesktopColours(QApplication::palette());
}

void TestMusicDetailedInfoWidget::yearAndTrackTakeFourDigits()
{
    click("m_btnEdit");
    for (const char* editor : {"m_lineYear", "m_lineTrackNo"}) {
        type(editor, QStringLiteral("x19871"));
        QCOMPARE(typed(editor), QStringLiteral("1987"));
        type(editor, QStringLiteral("-5"));
        QCOMPARE(typed(editor), QStringLiteral("5"));
    }
}

void TestMusicDetailedInfoWidget::cancelWritesNothing()
{
    QSignalSpy edited(m_panel.get(), SIGNAL(emitMusicInfoHasChanged()));
    QSignalSpy unlocked(m_panel.get(), SIGNAL(emitForbidToClickView(bool)));
    const QByteArray before = Fixtures::readBytes(m_song->localInfo->filePath);
    click("m_btnEdit");
    type("m_lineTitle", QStringLiteral("Other"));
    click("m_btnCancel");
    QVERIFY(!editing());
    QCOMPARE(shown("m_titleName"), QStringLiteral("Harbour"));
    QCOMPARE(m_song->localInfo->title, QStringLiteral("Harbour"));
    QCOMPARE(Fixtures::readBytes(m_song->localInfo->filePath), before);
    QCOMPARE(edited.size(), 0);
    QCOMPARE(unlocked.size(), 1);
    QCOMPARE(unlocked.first().first().toBool(), false);
    click("m_btnEdit");
    QCOMPARE(typed("m_lineTitle"), QStringLiteral("Harbour"));
}

void TestMusicDetailedInfoWidget::applyWritesTheFile()
{
    QSignalSpy edited(m_panel.get(), SIGNAL(emitMusicInfoHasChanged()));
    QSignalSpy covered(m_panel.get(), SIGNAL(emitMusicCoverHasChanged()));
    click("m_btnEdit");
    type("m_lineTitle", QString::fromUtf8("Østersøen"));
    type("m_lineArtist", QStringLiteral("Wren"));
    type("m_lineAlbum", QStringLiteral("Kites"));
    type("m_lineYear", QStringLiteral("1987"));
    type("m_lineTrackNo", QStringLiteral("12"));
    child<QComboBox>("m_comboGenre")->setCurrentIndex(2);
    click("m_btnApply");
    QVERIFY(!editing());
    const QHash<int, QString> expected = {
        {TAG_TITLE, QString::fromUtf8("Østersøen")}, {TAG_ARTIST, "Wren"}, {TAG_ALBUM, "Kites"},
        {TAG_GENRE, "Alternavite & Punk"},           {TAG_YEAR, "1987"},   {TAG_TRACK, "12"}};
    QCOMPARE(AudioFile::read(m_song->localInfo->filePath).texts, expected);
    QCOMPARE(m_song->localInfo->title, QString::fromUtf8("Østersøen"));
    QCOMPARE(m_song->localInfo->year, qint64(1987));
    QCOMPARE(m_song->localInfo->trackNumber, qint64(12));
    QCOMPARE(edited.size(), 1);
    QCOMPARE(covered.size(), 0);
}

void TestMusicDetailedInfoWidget::labelsShowWhatWasTyped()
{
    click("m_btnEdit");
    type("m_lineTitle", QStringLiteral("  two  blanks "));
    type("m_lineYear", QStringLiteral("0012"));
    click("m_btnApply");
    QCOMPARE(shown("m_titleName"), QStringLiteral("  two  blanks "));
    QCOMPARE(shown("m_yearNumber"), QStringLiteral("0012")); // not the number
    QCOMPARE(m_song->localInfo->year, qint64(12));
    QCOMPARE(AudioFile::read(m_song->localInfo->filePath).texts.value(TAG_YEAR), QStringLiteral("12"));
}

void TestMusicDetailedInfoWidget::anEmptyYearIsZero()
{
    click("m_btnEdit");
    type("m_lineYear", QString());
    type("m_lineTrackNo", QString());
    click("m_btnApply");
    QCOMPARE(m_song->localInfo->year, qint64(0));
    QCOMPARE(m_song->localInfo->trackNumber, qint64(0));
    const QHash<int, QString> texts = AudioFile::read(m_song->localInfo->filePath).texts;
    QVERIFY(!texts.contains(TAG_YEAR));
    QVERIFY(!texts.contains(TAG_TRACK));
}

void TestMusicDetailedInfoWidget::textsOfAnyLengthAreHandedBackWhole()
{
    const QString path = m_song->localInfo->filePath;
    const QString vast = QString(40000, QLatin1Char('x')) + QLatin1String("\nend");
    QCOMPARE(AudioFile::write(path, {{TAG_TITLE, vast}, {TAG_ARTIST, vast}, {TAG_ALBUM, vast}}), 0);
    LocalMusicInfo& local = *m_song->localInfo;
    local.title = local.artist = local.album = vast;
    m_panel->SetMusicDetailedInfo(m_song.get());
    click("m_btnEdit");
    type("m_lineTitle", QStringLiteral("Short"));
    click("m_btnApply");
    const QHash<int, QString> texts = AudioFile::read(path).texts;
    QCOMPARE(texts.value(TAG_TITLE), QStringLiteral("Short"));
    QVERIFY(texts.value(TAG_ARTIST) == vast);
    QVERIFY(texts.value(TAG_ALBUM) == vast);
    QVERIFY(local.artist == vast);
}

/// Apply lies in the place of Edit, and would take the cover out.
void TestMusicDetailedInfoWidget::aDoubleClickOnEditAppliesNothing()
{
    const QByteArray before = Fixtures::readBytes(m_song->localInfo->filePath);
    QSignalSpy applied(m_panel.get(), SIGNAL(emitMusicInfoHasChanged()));
    click("m_btnEdit");
    pressAsSecond(child<QWidget>("m_btnApply"));
    QVERIFY(editing());
    QCOMPARE(applied.size(), 0);
    QCOMPARE(Fixtures::readBytes(m_song->localInfo->filePath), before);
}

/// Space would press whatever button got it.
void TestMusicDetailedInfoWidget::theFocusStaysInThePanel()
{
    for (const char* end : {"m_btnCancel", "m_btnApply"}) {
        click("m_btnEdit");
        child<QWidget>(end)->setFocus();
        click(end);
        QCOMPARE(m_panel->window()->focusWidget(), child<QWidget>("m_btnEdit"));
    }
}

void TestMusicDetailedInfoWidget::aFailedSaveKeepsTheEditAndLogs()
{
    const QString path = m_song->localInfo->filePath;
    QFile::remove(path);
    click("m_btnEdit");
    type("m_lineTitle", QStringLiteral("Gone"));
    const LoggedLines lines;
    click("m_btnApply");
    const QStringList log = LoggedLines::take();
    QCOMPARE(m_song->localInfo->title, QStringLiteral("Gone"));
    QCOMPARE(shown("m_titleName"), QStringLiteral("Gone"));
    QVERIFY(!QFile::exists(path));
    QVERIFY(m_dialogs->texts.isEmpty());
    // That it could not be read either may be said before.
    QVERIFY(log.last().contains(path + QLatin1String(": the tag was not saved: ")));
}

void TestMusicDetailedInfoWidget::enterAppliesAndEscapeCancels()
{
    for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Enter}) {
        click("m_btnEdit");
        const QString title = key == Qt::Key_Return ? QStringLiteral("One") : QStringLiteral("Two");
        type("m_lineTitle", title);
        QTest::keyClick(child<QLineEdit>("m_lineTitle"), key);
        QVERIFY(!editing());
        QCOMPARE(m_song->localInfo->title, title);
    }
    click("m_btnEdit");
    type("m_lineYear", QString()); // not a year, and no reason to stay
    QTest::keyClick(child<QLineEdit>("m_lineYear"), Qt::Key_Return);
    QVERIFY(!editing());
    for (const char* editor : {"m_lineTitle", "m_comboGenre"}) {
        click("m_btnEdit");
        child<QWidget>(editor)->setFocus();
        QTest::keyClick(child<QWidget>(editor), Qt::Key_Escape);
        QVERIFY(!editing());
    }
    QTest::keyClick(m_panel.get(), Qt::Key_Return); // means nothing in read mode
    QCOMPARE(m_song->localInfo->title, QStringLiteral("Two"));
}

void TestMusicDetailedInfoWidget::enterOnTheCancelButtonCancels()
{
    click("m_btnEdit");
    type("m_lineTitle", QStringLiteral("Other"));
    child<QImageButton>("m_btnCancel")->setFocus();
    QTest::keyClick(child<QImageButton>("m_btnCancel"), Qt::Key_Return);
    QVERIFY(!editing());
    QCOMPARE(m_song->localInfo->title, QStringLiteral("Harbour"));
}

void TestMusicDetailedInfoWidget::anotherSongEndsTheEdit()
{
    click("m_btnEdit");
    const auto other = Fixtures::makeSong(true);
    m_panel->SetMusicDetailedInfo(&other->info);
    QVERIFY(!editing());
    QVERIFY(!child<QImageWidget>("currentImgWidget")->isEnabled());
    QCOMPARE(shown("m_titleName"), QString::fromUtf8("Täxt"));
    m_panel->SetMusicDetailedInfo(nullptr);
}

void TestMusicDetailedInfoWidget::noSongHidesThePanel()
{
    m_panel->SetMusicDetailedInfo(nullptr);
    QVERIFY(m_panel->isHidden());
    QVERIFY(!m_panel->song());
    m_panel->SlotOnBtnEdit();
    m_panel->SlotOnBtnApply(); // about nothing
    m_panel->SlotOnBtnCancel();
}

void TestMusicDetailedInfoWidget::nothingIsCutOff()
{
    for (const QLabel* label : m_panel->findChildren<QLabel*>())
        if (!qobject_cast<const RetractLabel*>(label))
            QVERIFY2(label->sizeHint().width() <= label->width(), qPrintable(label->objectName()));
    for (const QWidget* widget : m_panel->findChildren<QWidget*>()) {
        if (widget->parentWidget() == m_panel.get())
            QVERIFY2(m_panel->rect().contains(widget->geometry()), qPrintable(widget->objectName()));
    }
}

QTEST_MAIN(TestMusicDetailedInfoWidget)
#include "tst_musicdetailedinfowidget.moc"
