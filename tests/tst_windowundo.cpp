// What the user takes back in the window, by the link at its foot or by keys.
#include "undofixture.h"

#include <QComboBox>

class TestWindowUndo : public UndoFixture
{
    Q_OBJECT

private slots:
    void initTestCase() { start(); }
    void init()
    {
        prepareFoot();
        switchToLocal();
    }
    void cleanup() { clearFoot(); }

    void anEditIsTakenBack_data();
    void anEditIsTakenBack();
    void editsAreTakenBackOneAfterTheOther();
    void quickClicksTakeBackOneStep();
    void aSongIsUndefinedAgain();
    void inAnEditorTheKeysAreTheEditors();
    void anEditUnderWayGoesOn();
    void aGroupComesBack();
    void aGroupThatIsShownIsWholeAgain();
    void allGroupsComeBackAtOnce();
    void marksOfTheGroupShownStay();
    void editsAndDeletionsAreTakenBackInTurn();
    void whatOthersChangedStays();
    void whatStandsAtThePathStays();
    void aFileThatCannotBeWrittenStays();
    void whatPlaysPlaysOn();
    void anIntakeForgetsNothing();
    void aScanForgetsAll();
    void aSwitchForgetsAll();
    void withoutAChangeTheKeysDoNothing();
    void theOfferNamesTheChange();

private:
    QStringList files() const { return QDir(m_folder->path()).entryList(QDir::Files, QDir::Name); }
    /// Songs of one title.
    void copies(const QString& title, int count) const
    {
        const QString first = tone(title + "0", title);
        for (int i = 1; i < count; ++i)
            QFile::copy(first, m_folder->filePath(QString("%1%2.mp3").arg(title).arg(i)));
    }
};

void TestWindowUndo::anEditIsTakenBack_data()
{
    QTest::addColumn<bool>("byKeys");
    QTest::newRow("by the link") << false;
    QTest::newRow("by keys") << true;
}

/// With what the edit changed though the user did not touch it.
void TestWindowUndo::anEditIsTakenBack()
{
    QFETCH(bool, byKeys);
    const QString path = tone("a", "Ferry", "Électro");
    const QByteArray cover = Fixtures::jpeg(40, 40, 1);
    AudioFile::write(path, {}, &cover);
    const AudioFile::Content before = AudioFile::read(path);
    add({path, tone("b", "Other")});
    const QPixmap* const cell = songs().first()->localInfo->cover.get();
    QTRY_COMPARE(cell->width(), 40);
    const QImage shownCover = cell->toImage();
    edit(0, "Midnight Ferry");
    clickIn(panel(), "m_btnApply");
    QVERIFY(AudioFile::read(path).picture.isEmpty());
    QCOMPARE(listed(), QStringList({"Midnight Ferry", "Other"}));
    if (byKeys)
        undo();
    else
        clickLink("Undo");
    QCOMPARE(told(), QString("Took back the edit of \"Ferry\"."));
    QCOMPARE(links(), QStringList());
    QCOMPARE(AudioFile::read(path).texts, before.texts);
    QCOMPARE(AudioFile::read(path).picture, cover);
    QCOMPARE(listed(), QStringList({"Ferry", "Other"}));
    QCOMPARE(shownTitle(), QString("Ferry"));
    QCOMPARE(panel()->findChild<RetractLabel*>("m_genreName")->getName(), QString("Électro"));
    const QMusicInfo* const song = songs().first();
    QCOMPARE(song->localInfo->genre, QString("Électro"));
    QCOMPARE(song->localInfo->cover->toImage(), shownCover);
    QCOMPARE(Fixtures::readBytes(song->localInfo->coverPath), cover);
}

void TestWindowUndo::editsAreTakenBackOneAfterTheOther()
{
    const QString path = tone("a", "0");
    const QString other = tone("b", "0");
    add({path, other});
    editsGoBackInTurn(path, other);
}

void TestWindowUndo::quickClicksTakeBackOneStep()
{
    const QString path = tone("a", "0");
    add({path});
    for (const char* title : {"1", "2", "3", "4"})
        apply(0, title);
    clickLink("Undo");
    QCOMPARE(titleOf(path), QString("3"));
    const QRect place = link("Undo")->geometry();
    doubleClickLink("Undo");
    QCOMPARE(link("Undo")->geometry(), place); // or the second press would be on something else
    QCOMPARE(titleOf(path), QString("2"));
    clickThirdTime("Undo");
    clickThirdTime("Undo");
    QCOMPARE(titleOf(path), QString("2"));
    clickLink("Undo");
    QCOMPARE(titleOf(path), QString("1"));
}

void TestWindowUndo::aSongIsUndefinedAgain()
{
    const QString path = tone("a", "Ferry", "");
    add({path, tone("b", "Other")});
    QCOMPARE(counts().at(1), QString("Undefined songs(1)"));
    click("m_btnMusicUndefined");
    clickRow("m_allMusicListView", 0);
    clickIn(panel(), "m_btnEdit");
    panel()->findChild<QComboBox*>("m_comboGenre")->setCurrentText("Rock");
    clickIn(panel(), "m_btnApply");
    QCOMPARE(counts().at(1), QString("Undefined songs(0)"));
    QCOMPARE(listed(), QStringList());
    undo();
    QCOMPARE(counts().at(1), QString("Undefined songs(1)"));
    QCOMPARE(listed(), QStringList("Ferry"));
    QVERIFY(!AudioFile::read(path).texts.contains(TAG_GENRE));
}

void TestWindowUndo::inAnEditorTheKeysAreTheEditors()
{
    const QString path = tone("a", "Ferry");
    add({path});
    edit(0, "Midnight Ferry");
    clickIn(panel(), "m_btnApply");
    edit(0, "Typed");
    auto* editor = panel()->findChild<QLineEdit*>("m_lineTitle");
    QTest::keyClick(editor, Qt::Key_Z, Qt::ControlModifier);
    QVERIFY(editor->text() != "Typed");
    QCOMPARE(titleOf(path), QString("Midnight Ferry"));
    QCOMPARE(links(), QStringList("Undo"));
}

/// Nobody asked for what was typed to go.
void TestWindowUndo::anEditUnderWayGoesOn()
{
    const QString path = tone("a", "Ferry");
    add({path});
    edit(0, "Midnight Ferry");
    clickIn(panel(), "m_btnApply");
    edit(0, "Typed");
    clickLink("Undo");
    QCOMPARE(titleOf(path), QString("Ferry"));
    QCOMPARE(panel()->findChild<QLineEdit*>("m_lineTitle")->text(), QString("Typed"));
    QVERIFY(panel()->findChild<QImageButton*>("m_btnApply")->isVisible());
    clickIn(panel(), "m_btnCancel");
    QCOMPARE(shownTitle(), QString("Ferry"));
}

void TestWindowUndo::aGroupComesBack()
{
    copies("One", 3);
    copies("Two", 2);
    tone("Alone", "Alone", "");
    add({m_folder->path()});
    const QStringList onDisk = files();
    const QList<QMusicInfo*> all = songs();
    const QStringList counted = counts();
    QCOMPARE(counted, QStringList({"All songs(6)", "Undefined songs(1)", "Duplicate songs(2)"}));
    openGroup(0);
    clearGroup();
    QCOMPARE(told(), QString("2 songs moved to the trash."));
    QCOMPARE(links(), QStringList({"Undo", "Next group"}));
    QCOMPARE(counts(), QStringList({"All songs(4)", "Undefined songs(1)", "Duplicate songs(1)"}));
    click("m_btnMusicAll");
    undo();
    QCOMPARE(told(), QString("2 songs are back from the trash."));
    QCOMPARE(files(), onDisk);
    QVERIFY(m_bin.files().isEmpty());
    QCOMPARE(songs(), all);
    QCOMPARE(listed().size(), 6);
    QCOMPARE(counts(), counted);
    openGroup(0); // and all can be done again
    QCOMPARE(rows().size(), 3);
    clearGroup();
    QCOMPARE(told(), QString("2 songs moved to the trash."));
    QCOMPARE(m_bin.files().size(), 2);
}

void TestWindowUndo::aGroupThatIsShownIsWholeAgain()
{
    copies("One", 2);
    copies("Two", 3);
    add({m_folder->path()});
    openGroup(1);
    clearGroup();
    QCOMPARE(listed("m_dupMusicListView"), QStringList("One"));
    clickLink("Undo");
    QCOMPARE(listed("m_dupMusicListView"), QStringList({"One", "Two"}));
    QCOMPARE(part<QListView>("m_dupMusicListView")->currentIndex().row(), 1);
    QVERIFY(groupPanel()->isVisible());
    QCOMPARE(rows().size(), 3);
    QVERIFY(rows().first()->isKept());
}

void TestWindowUndo::allGroupsComeBackAtOnce()
{
    copies("One", 3);
    copies("Two", 2);
    copies("Six", 4);
    add({m_folder->path()});
    const QStringList onDisk = files();
    const QList<QMusicInfo*> all = songs();
    const QStringList counted = counts();
    openGroup(1);
    clickIn(groupPanel(), "m_btnClearAll");
    QTRY_COMPARE(told(), QString("6 songs moved to the trash."));
    QCOMPARE(files().size(), 3);
    QCOMPARE(links(), QStringList("Undo"));
    undo();
    QCOMPARE(told(), QString("6 songs are back from the trash."));
    QCOMPARE(links(), QStringList());
    QCOMPARE(files(), onDisk);
    QCOMPARE(listed("m_dupMusicListView").size(), 3);
    QCOMPARE(counts(), counted);
    QCOMPARE(songs(), all);
}

void TestWindowUndo::marksOfTheGroupShownStay()
{
    const QString path = tone("Alone", "Alone");
    copies("One", 3);
    add({m_folder->path()});
    const int row = listed().indexOf("Alone");
    edit(row, "Another");
    clickIn(panel(), "m_btnApply");
    openGroup(0);
    rows().at(2)->SlotOnBtnCheckBox();
    undo();
    QCOMPARE(titleOf(path), QString("Alone"));
    QVERIFY(groupPanel()->isVisible());
    QVERIFY(!panel()->isVisible());
    QCOMPARE(rows().size(), 3);
    QVERIFY(rows().at(0)->isKept() && !rows().at(1)->isKept() && rows().at(2)->isKept());
}

void TestWindowUndo::editsAndDeletionsAreTakenBackInTurn()
{
    copies("One", 2);
    add({m_folder->path()});
    const QList<QMusicInfo*> all = songs();
    const QString second = all.last()->localInfo->filePath;
    edit(1, "Edited");
    clickIn(panel(), "m_btnApply");
    edit(1, "One");
    clickIn(panel(), "m_btnApply");
    openGroup(0);
    clearGroup();
    QVERIFY(!QFile::exists(second));
    click("m_btnMusicAll");
    undo();
    QCOMPARE(titleOf(second), QString("One"));
    QCOMPARE(songs(), all);
    undo();
    QCOMPARE(titleOf(second), QString("Edited"));
    QCOMPARE(counts().at(2), QString("Duplicate songs(0)"));
    undo();
    QCOMPARE(titleOf(second), QString("One"));
    QCOMPARE(counts().at(2), QString("Duplicate songs(1)"));
    QCOMPARE(links(), QStringList());
}

void TestWindowUndo::whatOthersChangedStays()
{
    const QString path = tone("a", "Ferry");
    const QString other = tone("b", "Other");
    add({path, other});
    edit(1, "Changed");
    clickIn(panel(), "m_btnApply");
    edit(0, "Midnight Ferry");
    clickIn(panel(), "m_btnApply");
    AudioFile::write(path, {{TAG_ALBUM, "Of another program"}});
    const QByteArray bytes = Fixtures::readBytes(path);
    undo();
    QCOMPARE(told(),
             QString("The edit of \"Midnight Ferry\" cannot be taken back: another program changed the "
                     "file since."));
    QCOMPARE(Fixtures::readBytes(path), bytes);
    QCOMPARE(listed(), QStringList({"Midnight Ferry", "Changed"}));
    QCOMPARE(links(), QStringList("Undo")); // of the step before
    undo();
    QCOMPARE(titleOf(other), QString("Other"));
}

void TestWindowUndo::whatStandsAtThePathStays()
{
    copies("One", 3);
    add({m_folder->path()});
    const QList<QMusicInfo*> all = songs();
    openGroup(0);
    clearGroup();
    Fixtures::saveBytes("somebody's", m_folder->filePath("One1.mp3"));
    click("m_btnMusicAll");
    undo();
    QVERIFY2(
        told().startsWith("1 song is back from the trash. 1 file could not be brought back: \"One1.mp3\" ("),
        qPrintable(told()));
    QCOMPARE(Fixtures::readBytes(m_folder->filePath("One1.mp3")), QByteArray("somebody's"));
    QCOMPARE(m_bin.files().size(), 1);
    QCOMPARE(songs(), QList<QMusicInfo*>({all.at(0), all.at(2)}));
    QCOMPARE(counts(), QStringList({"All songs(2)", "Undefined songs(0)", "Duplicate songs(1)"}));
}

void TestWindowUndo::aFileThatCannotBeWrittenStays()
{
    const QString path = tone("a", "Ferry");
    add({path});
    edit(0, "Midnight Ferry");
    clickIn(panel(), "m_btnApply");
    setMode(path, 0444);
    undo();
    QCOMPARE(told(), QString("The edit of \"Midnight Ferry\" cannot be taken back: the file is read-only."));
    QCOMPARE(titleOf(path), QString("Midnight Ferry"));
    QCOMPARE(listed(), QStringList("Midnight Ferry"));
}

void TestWindowUndo::whatPlaysPlaysOn()
{
    copies("One", 2);
    add({m_folder->path()});
    const QString second = songs().last()->localInfo->filePath;
    edit(1, "One"); // a file that was saved is another one
    type(panel(), "m_lineYear", "1999");
    clickIn(panel(), "m_btnApply");
    clickRow("m_allMusicListView", 1, true);
    QTRY_COMPARE(played(), QString("00::01"));
    undo();
    QCOMPARE(told(), QString("Took back the edit of \"One\"."));
    openGroup(0);
    clearGroup();
    QVERIFY(!QFile::exists(second));
    undo();
    QVERIFY(QFile::exists(second));
    QTRY_COMPARE(played(), QString("00::02"));
    QCOMPARE(AudioFile::read(second).texts.value(TAG_YEAR), QString());
}

/// A song that came meanwhile stands behind them.
void TestWindowUndo::anIntakeForgetsNothing()
{
    copies("One", 3);
    add({m_folder->path()});
    QList<QMusicInfo*> all = songs();
    openGroup(0);
    clearGroup();
    QTemporaryDir elsewhere;
    const QString later = Fixtures::copyTone("flac", elsewhere.path(), "later");
    add({later});
    QCOMPARE(songs().size(), 2);
    all.append(songs().last());
    undo();
    QCOMPARE(songs(), all);
    QCOMPARE(files().size(), 3);
}

void TestWindowUndo::aScanForgetsAll()
{
    copies("One", 3);
    add({m_folder->path()});
    clickRow("m_allMusicListView", 2); // whose panel is told of it once it has left
    openGroup(0);
    clearGroup();
    QVERIFY(links().contains("Undo"));
    click("m_btnStarScan");
    QVERIFY(!links().contains("Undo"));
    undo();
    QCOMPARE(songs().size(), 1);
    QCOMPARE(files().size(), 1);
    QCOMPARE(m_bin.files().size(), 2);
}

void TestWindowUndo::aSwitchForgetsAll()
{
    const QString path = tone("a", "Ferry");
    copies("One", 2);
    add({m_folder->path()});
    edit(listed().indexOf("Ferry"), "Midnight Ferry");
    clickIn(panel(), "m_btnApply");
    openGroup(0);
    clearGroup();
    QVERIFY(links().contains("Undo"));
    click("m_btnLocalClean");
    QTRY_VERIFY(part<QWidget>("m_btniTunesClean")->isVisible());
    QCOMPARE(links(), QStringList());
    undo();
    QCOMPARE(told(), QString());
    QCOMPARE(titleOf(path), QString("Midnight Ferry"));
    QCOMPARE(m_bin.files().size(), 1);
}

void TestWindowUndo::withoutAChangeTheKeysDoNothing()
{
    const QString path = tone("a", "Ferry");
    add({path});
    const QByteArray bytes = Fixtures::readBytes(path);
    edit(0, "Never applied");
    clickIn(panel(), "m_btnCancel");
    undo();
    QCOMPARE(told(), QString());
    QCOMPARE(Fixtures::readBytes(path), bytes);
    QCOMPARE(links(), QStringList());
}

void TestWindowUndo::theOfferNamesTheChange()
{
    const auto tip = [this] {
        for (const TextLink* link : line()->findChildren<TextLink*>())
            if (!link->isHidden() && link->text() == "Undo")
                return link->toolTip();
        return QString();
    };
    copies("One", 3);
    add({m_folder->path()});
    edit(2, "One <b>");
    clickIn(panel(), "m_btnApply");
    QVERIFY(tip().contains("Takes back the edit of \"One &lt;b&gt;\" (Ctrl+Z)"));
    openGroup(0);
    clearGroup();
    QVERIFY(tip().contains("Takes back the deletion of 1 song (Ctrl+Z)"));
    m_window->SlotHomeMenu(); // whatever else is told
    QCOMPARE(links(), QStringList("Undo"));
}

QTEST_MAIN(TestWindowUndo)
#include "tst_windowundo.moc"
