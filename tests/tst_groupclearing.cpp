#include "common/retractlabel.h"
#include "common/style.h"
#include "duplicatemusicdetailedwidget.h"
#include "dupmusicinfo.h"
#include "grouppanelfixture.h"
#include "guidriver.h"

#include <QCheckBox>
#include <QSignalSpy>
#include <QtTest>
#include <QWindow>

/// Clearing groups from their panel.
class TestGroupClearing : public GroupPanelFixture
{
    Q_OBJECT

private slots:
    void initTestCase() { start(); }
    void init() { prepare(); }
    void cleanup() { clear(); }

    void buttonsGoWithTheLastGroup();
    void clearingAsksOnceAndForAll();
    void theQuestionSaysWhatGoesAndWhatStays();
    void theQuestionWarnsWhenNothingStays();
    void theQuestionShortensALongTitle();
    void enterAnswersTheQuestionWithCancel();
    void whoCancelsIsAskedAgain();
    void cancellingDeletesNothing();
    void noStrayDoubleClickDeletes();
    void clearingWalksFromTheLastRow();
    void theLastRowGoes();
    void rowsThatLostTheirSongsAreShownAnew();
    void theBestOfWhatIsLeftIsMarked();
    void clearAllTellsItsNumbersBefore();
    void clearAllTakesThisGroupFirst();
};

void TestGroupClearing::buttonsGoWithTheLastGroup()
{
    QList<QMusicInfo*> songs = group(2);
    m_panel->SetDuplicateMusicDetailedInfo(&songs);
    const auto visible = [&] {
        return child<QWidget>(m_panel.get(), "m_labCaption")->isVisible() &&
               child<QWidget>(m_panel.get(), "m_btnClearOne")->isVisible() &&
               child<QWidget>(m_panel.get(), "m_btnClearAll")->isVisible();
    };
    QVERIFY(visible());
    m_panel->SlotSetDeleteBtn(3);
    QVERIFY(visible());
    m_panel->SlotSetDeleteBtn(0);
    QVERIFY(!visible());
    QVERIFY(!child<QWidget>(m_panel.get(), "m_labCaption")->isVisible());
    m_panel->SlotSetDeleteBtn(2);
    QVERIFY(!visible()); // only the next group brings them back
    m_panel->SetDuplicateMusicDetailedInfo(&songs);
    QVERIFY(visible());
}

void TestGroupClearing::clearingAsksOnceAndForAll()
{
    QList<QMusicInfo*> songs = group(4);
    m_panel->SetDuplicateMusicDetailedInfo(&songs);
    QSignalSpy deleted(m_panel.get(), SIGNAL(emitDeleteDupMusicWasSelected(QMusicInfo*)));
    int asked = 0;
    m_dialogs->expect([&](QWidget* dialog) {
        ++asked;
        QCOMPARE(dialog->windowTitle(), QStringLiteral("Melodryft"));
        QCOMPARE(dialog->size(), QSize(441, 145));
        QCOMPARE(child<QWidget>(dialog, "m_checkBox")->pos(), QPoint(94, 60));
        QTest::mouseClick(child<QCheckBox>(dialog, "m_checkBox"), Qt::LeftButton, Qt::NoModifier, {8, 9});
        click(dialog, "m_btnOK");
    });
    click(m_panel.get(), "m_btnClearOne");
    QCOMPARE(asked, 1);
    QCOMPARE(deleted.size(), 3);
    m_panel->SetDuplicateMusicDetailedInfo(&songs);
    click(m_panel.get(), "m_btnClearOne"); // a dialog would be closed, and nothing deleted
    QCOMPARE(deleted.size(), 6);
}

void TestGroupClearing::theQuestionSaysWhatGoesAndWhatStays()
{
    QList<QMusicInfo*> songs = group(4);
    m_panel->SetDuplicateMusicDetailedInfo(&songs);
    rows().at(2)->SlotOnBtnCheckBox(); // kept
    bool asked = false;
    m_dialogs->expect([&](QWidget* dialog) {
        asked = true;
        const auto* question = child<RetractLabel>(dialog, "m_labQuestion");
        QCOMPARE(question->getName(), QString(R"(Delete 2 songs, keep "Song 0" (WAV) and 1 more?)"));
        QCOMPARE(question->text(), question->getName());
        QCOMPARE(question->palette().color(QPalette::WindowText), Style::ink);
        QVERIFY(child<RetractLabel>(dialog, "m_labFiles")->getName().contains("file"));
        QVERIFY(dialog->accessibleDescription().startsWith(question->getName()));
        for (const char* line : {"m_labQuestion", "m_labFiles"})
            for (const char* other : {"m_checkBox", "m_btnOK", "m_btnCancel"})
                QVERIFY(child<QWidget>(dialog, line)->geometry().bottom() <=
                        child<QWidget>(dialog, other)->geometry().top());
        click(dialog, "m_btnCancel");
    });
    click(m_panel.get(), "m_btnClearOne");
    QVERIFY(asked);
}

void TestGroupClearing::theQuestionWarnsWhenNothingStays()
{
    QList<QMusicInfo*> songs = group(2);
    m_panel->SetDuplicateMusicDetailedInfo(&songs);
    for (const bool nothingStays : {true, false}) { // the dialog is the same one
        rows().first()->SlotOnBtnCheckBox();
        bool asked = false;
        m_dialogs->expect([&](QWidget* dialog) {
            asked = true;
            const auto* question = child<RetractLabel>(dialog, "m_labQuestion");
            QCOMPARE(question->getName().endsWith("keep none of this group?"), nothingStays);
            QCOMPARE(question->palette().color(QPalette::WindowText),
                     nothingStays ? Style::dangerText : Style::ink);
            click(dialog, "m_btnCancel");
        });
        click(m_panel.get(), "m_btnClearOne");
        QVERIFY(asked);
    }
}

/// The other button is reached by keys as well.
void TestGroupClearing::enterAnswersTheQuestionWithCancel()
{
    QList<QMusicInfo*> songs = group(3);
    m_panel->SetDuplicateMusicDetailedInfo(&songs);
    QSignalSpy deleted(m_panel.get(), SIGNAL(emitDeleteDupMusicWasSelected(QMusicInfo*)));
    m_dialogs->expect([](QWidget* dialog) { QTest::keyClick(dialog->windowHandle(), Qt::Key_Return); });
    click(m_panel.get(), "m_btnClearOne");
    QCOMPARE(deleted.size(), 0);
    m_dialogs->expect([](QWidget* dialog) {
        QApplication::setActiveWindow(dialog);
        for (int i = 0; i < 4 && !child<QWidget>(dialog, "m_btnOK")->hasFocus(); ++i)
            QTest::keyClick(dialog->windowHandle(), Qt::Key_Tab);
        QTest::keyClick(dialog->windowHandle(), Qt::Key_Space);
    });
    click(m_panel.get(), "m_btnClearOne");
    QCOMPARE(deleted.size(), 2);
}

void TestGroupClearing::theQuestionShortensALongTitle()
{
    QList<QMusicInfo*> songs = group(2);
    songs.first()->localInfo->title = QStringLiteral("Midnight Ferry, ").repeated(300);
    m_panel->SetDuplicateMusicDetailedInfo(&songs);
    bool asked = false;
    m_dialogs->expect([&](QWidget* dialog) {
        asked = true;
        const auto* question = child<RetractLabel>(dialog, "m_labQuestion");
        QVERIFY2(question->text().endsWith(R"(..." (WAV)?)"), qPrintable(question->text()));
        QVERIFY(question->text().size() > 50);
        click(dialog, "m_btnCancel");
    });
    click(m_panel.get(), "m_btnClearOne");
    QVERIFY(asked);
}

void TestGroupClearing::whoCancelsIsAskedAgain()
{
    QList<QMusicInfo*> songs = group(4);
    m_panel->SetDuplicateMusicDetailedInfo(&songs);
    QSignalSpy deleted(m_panel.get(), SIGNAL(emitDeleteDupMusicWasSelected(QMusicInfo*)));
    int asked = 0;
    for (const char* end : {"m_btnCancel", "escape", "m_btnOK"}) {
        m_dialogs->expect([&](QWidget* dialog) {
            ++asked;
            QVERIFY(!child<QCheckBox>(dialog, "m_checkBox")->isChecked());
            if (QByteArray(end) != "m_btnOK")
                QTest::mouseClick(child<QCheckBox>(dialog, "m_checkBox"), Qt::LeftButton, Qt::NoModifier,
                                  {8, 9});
            if (QByteArray(end) == "escape")
                QTest::keyClick(dialog, Qt::Key_Escape);
            else
                click(dialog, end);
        });
        QVERIFY(deleted.isEmpty());
        click(m_panel.get(), "m_btnClearOne");
    }
    QCOMPARE(asked, 3);
    QCOMPARE(deleted.size(), 3);
}

void TestGroupClearing::cancellingDeletesNothing()
{
    QList<QMusicInfo*> songs = group(3);
    m_panel->SetDuplicateMusicDetailedInfo(&songs);
    QSignalSpy deleted(m_panel.get(), SIGNAL(emitDeleteDupMusicWasSelected(QMusicInfo*)));
    m_dialogs->expectButton("m_btnCancel");
    click(m_panel.get(), "m_btnClearOne");
    m_dialogs->expect([](QWidget* dialog) { QTest::keyClick(dialog, Qt::Key_Escape); });
    click(m_panel.get(), "m_btnClearOne");
    QCOMPARE(deleted.size(), 0);
    QCOMPARE(rows().size(), 3);
}

/// A double click begun elsewhere, whose second press falls on a button that deletes.
void TestGroupClearing::noStrayDoubleClickDeletes()
{
    QList<QMusicInfo*> songs = group(3);
    m_panel->SetDuplicateMusicDetailedInfo(&songs);
    QSignalSpy deleted(m_panel.get(), SIGNAL(emitDeleteDupMusicWasSelected(QMusicInfo*)));
    for (const char* button : {"m_btnClearOne", "m_btnClearAll"}) {
        click(rows().first(), "m_btnPlayMusic");
        pressAsSecond(child<QWidget>(m_panel.get(), button));
        QVERIFY(m_dialogs->texts.isEmpty());
        QCOMPARE(deleted.size(), 0);
    }
    bool asked = false;
    m_dialogs->expect([&](QWidget* dialog) { // the first press opened it under the pointer
        asked = true;
        pressAsSecond(child<QWidget>(dialog, "m_btnOK"));
        QVERIFY(dialog->isVisible());
        click(dialog, "m_btnCancel");
    });
    click(m_panel.get(), "m_btnClearOne");
    QVERIFY(asked);
    QCOMPARE(deleted.size(), 0);
}

void TestGroupClearing::clearingWalksFromTheLastRow()
{
    QList<QMusicInfo*> songs = group(4);
    const QList<QMusicInfo*> all = songs;
    m_panel->SetDuplicateMusicDetailedInfo(&songs);
    rows().at(2)->SlotOnBtnCheckBox(); // kept
    QList<QMusicInfo*> deleted;
    connect(m_panel.get(), &DuplicateMusicDetailedWidget::emitDeleteDupMusicWasSelected, this,
            [&](QMusicInfo* song) { deleted.append(song); });
    m_panel->SlotDeleteSongWasSelected();
    QCOMPARE(deleted, QList<QMusicInfo*>({all.at(3), all.at(1)}));
}

void TestGroupClearing::theLastRowGoes()
{
    QList<QMusicInfo*> songs = group(3);
    m_panel->SetDuplicateMusicDetailedInfo(&songs);
    click(rows().first(), "m_btnPlayMusic");
    connect(m_panel.get(), &DuplicateMusicDetailedWidget::emitDeleteDupMusicWasSelected, this,
            [&] { songs.removeLast(); });
    m_panel->SlotDeleteSongWasSelected();
    QVERIFY(rows().isEmpty());
    QVERIFY(m_panel->keptSongs().isEmpty());
    m_panel->SlotDeleteSongWasSelected(); // its place is skipped
    QCOMPARE(songs.size(), 1);
    click(player(), "m_btnPause"); // the row that it would tell is gone
}

/// The pairing by position leaves rows whose songs are not those of the list any more.
void TestGroupClearing::rowsThatLostTheirSongsAreShownAnew()
{
    QList<QMusicInfo*> songs = group(4);
    m_panel->SetDuplicateMusicDetailedInfo(&songs);
    rows().at(0)->SlotOnBtnCheckBox(); // to be deleted
    rows().at(1)->SlotOnBtnCheckBox(); // kept
    rows().at(2)->SlotOnBtnCheckBox(); // kept
    connect(m_panel.get(), &DuplicateMusicDetailedWidget::emitDeleteDupMusicWasSelected, this,
            [&] { songs.removeLast(); });
    m_panel->SlotDeleteSongWasSelected();
    QCOMPARE(songs.size(), 2);
    QCOMPARE(rows().size(), 2);
    for (int i = 0; i < 2; ++i)
        QCOMPARE(rows().at(i)->song(), songs.at(i));
}

void TestGroupClearing::theBestOfWhatIsLeftIsMarked()
{
    QList<QMusicInfo*> songs = group(4);
    for (int i = 0; i < 4; ++i) {
        songs.at(i)->localInfo->format = QStringLiteral("MP3");
        songs.at(i)->localInfo->bitrate = 100000 * (i + 1);
    }
    m_panel->SetDuplicateMusicDetailedInfo(&songs);
    QCOMPARE(markedRows(), QList<int>({3}));
    rows().at(1)->SlotOnBtnCheckBox(); // kept
    connect(m_panel.get(), &DuplicateMusicDetailedWidget::emitDeleteDupMusicWasSelected, this,
            [&] { songs.removeLast(); });
    m_panel->SlotDeleteSongWasSelected();
    QCOMPARE(rows().size(), 2);
    QCOMPARE(markedRows(), QList<int>({1}));
}

/// Counted anew each time.
void TestGroupClearing::clearAllTellsItsNumbersBefore()
{
    DupMusicInfo shown{group(3)};
    DupMusicInfo other{group(4)};
    QList<DupMusicInfo*> groups = {&shown, &other};
    m_panel->clearing().setLists([&groups] { return SongLists{nullptr, &groups, nullptr, nullptr}; });
    m_panel->SetDuplicateMusicDetailedInfo(&shown.musicList);
    const auto* button = child<QWidget>(m_panel.get(), "m_btnClearAll");
    QVERIFY(tipOf(button).startsWith("Of 2 groups, 5 songs go with their files; 2 stay."));
    rows().at(0)->SlotOnBtnCheckBox();
    rows().at(2)->SlotOnBtnCheckBox();
    QVERIFY(tipOf(button).startsWith("Of 2 groups, 5 songs go"));
    other.musicList.removeLast();
    QVERIFY(tipOf(button).startsWith("Of 2 groups, 4 songs go"));
}

void TestGroupClearing::clearAllTakesThisGroupFirst()
{
    QList<QMusicInfo*> songs = group(3);
    m_panel->SetDuplicateMusicDetailedInfo(&songs);
    QStringList order;
    connect(m_panel.get(), &DuplicateMusicDetailedWidget::emitDeleteDupMusicWasSelected, this, [&] {
        songs.removeLast();
        order.append("one");
    });
    connect(m_panel.get(), &DuplicateMusicDetailedWidget::emitDeleteAllDupMusic, this,
            [&] { order.append("all"); });
    click(m_panel.get(), "m_btnClearAll"); // does not ask
    QCOMPARE(order, QStringList({"one", "one", "all"}));
    QVERIFY(child<QWidget>(m_panel.get(), "m_btnClearAll")->isHidden());
    QVERIFY(child<QWidget>(m_panel.get(), "m_btnClearOne")->isHidden());
}

QTEST_MAIN(TestGroupClearing)
#include "tst_groupclearing.moc"
