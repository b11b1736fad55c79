// Keys that open, apply and cancel the editing of a song, and those that fields and buttons keep for
// themselves.
#include "keysfixture.h"

#include <QComboBox>

class TestEditingKeys : public KeysFixture
{
    Q_OBJECT

private slots:
    void initTestCase() { start(); }
    void init() { prepareFoot(); }
    void cleanup() { clearFoot(); }

    void songsAreEdited_data() { bothModesAndDisplays(); }
    void songsAreEdited();
    void songsOfGroupsAreEdited_data() { bothModesAndDisplays(); }
    void songsOfGroupsAreEdited();
    void theWholePanelAppliesAndCancels_data();
    void theWholePanelAppliesAndCancels();
    void fieldsKeepTheirKeys();
    void buttonsKeepTheirKeys();
    void theFocusComesBack_data() { bothModesAndDisplays(); }
    void theFocusComesBack();
    void aPlaceThatIsGoneLeavesItInThePanel();
};

void TestEditingKeys::songsAreEdited()
{
    QFETCH(bool, local);
    QFETCH(bool, table);
    fill(local, {"Anchor", "Beacon"});
    showTable(table);
    key(Qt::Key_F2); // nothing is marked
    QVERIFY(panel()->isHidden());
    key(Qt::Key_End);
    key(Qt::Key_F2);
    auto* title = panel()->findChild<QLineEdit*>("m_lineTitle");
    QVERIFY(title->isVisible() && title->hasFocus());
    QCOMPARE(title->text(), QString("Beacon"));
    key(Qt::Key_Escape);
    QVERIFY(title->isHidden());
    key(Qt::Key_Home);
    key(Qt::Key_E, Qt::ControlModifier);
    QVERIFY(title->isVisible());
    QCOMPARE(title->text(), QString("Anchor"));
    type(panel(), "m_lineTitle", "Harbour");
    key(Qt::Key_Return, Qt::ControlModifier);
    QVERIFY(title->isHidden());
    QCOMPARE(shownTitle(), QString("Harbour"));
    QCOMPARE(view()->model()->index(0, 0).data().toString(), QString("Harbour"));
}

/// In the place of their group, which comes back with its own keys.
void TestEditingKeys::songsOfGroupsAreEdited()
{
    QFETCH(bool, local);
    QFETCH(bool, table);
    fill(local, {"Anchor", "Anchor", "Beacon", "Beacon", "Beacon"});
    key(Qt::Key_3, Qt::ControlModifier);
    showTable(table);
    key(Qt::Key_F2); // no group is shown
    key(Qt::Key_End);
    key(Qt::Key_Down, Qt::AltModifier);
    key(Qt::Key_F2);
    QVERIFY(group()->isHidden());
    QVERIFY(panel()->findChild<QLineEdit*>("m_lineTitle")->hasFocus());
    type(panel(), "m_lineTitle", "Cove");
    key(Qt::Key_Return, Qt::ControlModifier);
    QCOMPARE(view()->model()->rowCount(), 2);
    QCOMPARE(part<QImageButton>("m_btnMusicDuplicate")->btnText(), QString("Duplicate songs(2)"));
    key(Qt::Key_End);
    QVERIFY(panel()->isHidden());
    QCOMPARE(rows().size(), 2);
}

void TestEditingKeys::theWholePanelAppliesAndCancels_data()
{
    QTest::addColumn<QString>("focus");
    for (const char* name :
         {"m_lineTitle", "m_lineArtist", "m_lineAlbum", "m_lineYear", "m_lineTrackNo", "m_comboGenre",
          "m_btnApply", "m_btnCancel", "m_btnKeepCover", "m_linkKeepGenre"})
        QTest::newRow(name) << name;
}

void TestEditingKeys::theWholePanelAppliesAndCancels()
{
    QFETCH(QString, focus);
    switchToLocal();
    const QString path = tone("a", "Anchor", "Électro");
    const QByteArray cover = Fixtures::jpeg(40, 40, 1);
    AudioFile::write(path, {}, &cover);
    add({path});
    QApplication::setActiveWindow(m_window.get());
    auto* title = panel()->findChild<QLineEdit*>("m_lineTitle");
    key(Qt::Key_Home);
    key(Qt::Key_F2);
    title->setText("Beacon");
    auto* focused = panel()->findChild<QWidget*>(focus);
    QVERIFY(focused->isVisible());
    focused->setFocus();
    key(Qt::Key_Escape);
    QVERIFY(title->isHidden());
    QCOMPARE(shownTitle(), QString("Anchor"));
    key(Qt::Key_F2);
    title->setText("Beacon");
    focused->setFocus();
    key(Qt::Key_Return, Qt::ControlModifier);
    QVERIFY(title->isHidden());
    QCOMPARE(shownTitle(), QString("Beacon"));
    QCOMPARE(AudioFile::read(path).texts.value(TAG_TITLE), QString("Beacon"));
}

/// In a field nothing of this happens, nor anywhere else in a panel with fields.
void TestEditingKeys::fieldsKeepTheirKeys()
{
    fill(true, {"Anchor", "Beacon", "Cove"});
    key(Qt::Key_Home);
    key(Qt::Key_F2);
    for (const char* name : {"m_lineTitle", "m_lineYear", "m_comboGenre", "m_btnApply"}) {
        panel()->findChild<QWidget*>(name)->setFocus();
        for (const int each : {Qt::Key_Up, Qt::Key_Down, Qt::Key_PageDown, Qt::Key_Home, Qt::Key_End,
                               Qt::Key_B, Qt::Key_Delete, Qt::Key_F2})
            key(each);
        for (const int each : {Qt::Key_1, Qt::Key_2, Qt::Key_3, Qt::Key_G, Qt::Key_E, Qt::Key_Down})
            key(each, Qt::ControlModifier);
        QCOMPARE(row(), 0);
        QCOMPARE(view()->objectName(), QString("m_allMusicListView"));
        QCOMPARE(view()->model()->rowCount(), 3);
        QCOMPARE(m_window->focusWidget()->objectName(), QString(name));
    }
    QVERIFY(panel()->findChild<QLineEdit*>("m_lineTitle")->text().contains('b'));
}

void TestEditingKeys::buttonsKeepTheirKeys()
{
    fill(true, {"Anchor", "Anchor", "Beacon"});
    key(Qt::Key_Home);
    part<QWidget>("m_btnEdit")->setFocus();
    key(Qt::Key_Return); // the default button
    QVERIFY(part<QWidget>("m_lineTitle")->isVisible());
    key(Qt::Key_Escape);
    part<QWidget>("m_btnTableDisplay")->setFocus();
    key(Qt::Key_Space);
    QCOMPARE(view()->objectName(), QString("m_allMusicTableView"));
    QCOMPARE(m_played.size(), 0);
    part<QWidget>("m_btnStarScan")->setFocus();
    key(Qt::Key_Return); // which this button does not take
    QCOMPARE(m_played.size(), 1);
}

/// To where the editing was begun.
void TestEditingKeys::theFocusComesBack()
{
    QFETCH(bool, local);
    QFETCH(bool, table);
    fill(local, {"Anchor", "Beacon"});
    showTable(table);
    key(Qt::Key_Home);
    const QList<QPair<const char*, int>> places = {{"m_viewFocus", Qt::Key_F2},
                                                   {"m_btnStarScan", Qt::Key_F2},
                                                   {"m_btnEdit", Qt::Key_Space},
                                                   {"m_btnIdentify", Qt::Key_F2}};
    for (const auto& [name, begin] : places)
        for (const Qt::KeyboardModifier apply : {Qt::NoModifier, Qt::ControlModifier}) {
            part<QWidget>(name)->setFocus();
            key(begin);
            QVERIFY(part<QWidget>("m_lineTitle")->hasFocus());
            key(apply ? Qt::Key_Return : Qt::Key_Escape, apply);
            QVERIFY(part<QWidget>("m_lineTitle")->isHidden());
            const char* const back = QByteArray(name) == "m_btnIdentify" ? "m_btnEdit" : name;
            QVERIFY2(part<QWidget>(back)->hasFocus(), name);
        }
}

void TestEditingKeys::aPlaceThatIsGoneLeavesItInThePanel()
{
    fill(true, {"Anchor", "Anchor"});
    key(Qt::Key_3, Qt::ControlModifier);
    key(Qt::Key_Home);
    rows().at(1)->findChild<QWidget*>("m_btnPlayMusic")->setFocus();
    key(Qt::Key_F2);
    QVERIFY(group()->isHidden());
    key(Qt::Key_Escape);
    QVERIFY(part<QWidget>("m_btnEdit")->hasFocus());
}

QTEST_MAIN(TestEditingKeys)
#include "tst_editingkeys.moc"
