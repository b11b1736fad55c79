#include "keysfixture.h"
#include "views/viewfocus.h"

#include <QAccessible>
#include <QHeaderView>
#include <QLineEdit>
#include <QTableView>

/// What the window has to say, in either mode, to those who hear it.
class TestReadingOut : public KeysFixture
{
    Q_OBJECT

private slots:
    void init() { prepareFoot(); }
    void cleanup() { clearFoot(); }

    void theListSaysWhatItShowsAndHowMany_data() { bothModesAndDisplays(); }
    void theListSaysWhatItShowsAndHowMany();
    void theListIsThatOfTheViewInSight_data() { bothModesAndDisplays(); }
    void theListIsThatOfTheViewInSight();
    void whatIsFoundIsCounted_data() { bothModesAndDisplays(); }
    void whatIsFoundIsCounted();
    void theMarkedSongHasTheFocus_data() { bothModesAndDisplays(); }
    void theMarkedSongHasTheFocus();
    void columnsCanBePressed_data() { bothModes(); }
    void columnsCanBePressed();
    void aGroupIsAListOfSentences_data() { bothModes(); }
    void aGroupIsAListOfSentences();
    void theRowChosenSaysSo();
    void panelsOutOfSightAreNotThere();
    void editorsHaveTheNamesOfTheirLabels();

private:
    static void bothModes()
    {
        QTest::addColumn<bool>("local");
        QTest::newRow("local") << true;
        QTest::newRow("iTunes") << false;
    }
    static QAccessibleInterface* of(QObject* object) { return QAccessible::queryAccessibleInterface(object); }
    static QString name(const QAccessibleInterface* part) { return part->text(QAccessible::Name); }
    QAccessibleInterface* list() const { return of(part<QWidget>("m_viewFocus")); }
    QStringList items() const
    {
        QStringList names;
        for (int i = 0; i < list()->childCount(); ++i)
            names.append(name(list()->child(i)).section(", ", 0, 0));
        return names;
    }
    /// The names of all parts below with this role.
    static QStringList all(const QAccessibleInterface* panel, QAccessible::Role role)
    {
        QStringList names;
        for (int i = 0; i < panel->childCount(); ++i) {
            const QAccessibleInterface* const child = panel->child(i);
            if (child->role() == role)
                names.append(name(child));
            names += all(child, role);
        }
        return names;
    }
};

void TestReadingOut::theListSaysWhatItShowsAndHowMany()
{
    QFETCH(bool, local);
    QFETCH(bool, table);
    fill(local, {"Ferry", "Ferry", "Lamp"});
    showTable(table);
    QCOMPARE(name(list()), QString("All songs, 3 songs"));
    QCOMPARE(items(), QStringList({"Ferry", "Ferry", "Lamp"}));
    key(Qt::Key_2, Qt::ControlModifier);
    QCOMPARE(name(list()), QString("Undefined songs, 0 songs"));
    key(Qt::Key_3, Qt::ControlModifier);
    QCOMPARE(name(list()), QString("Duplicate songs, 1 group"));
    QCOMPARE(items(), QStringList({"Ferry"}));
    QVERIFY(name(list()->child(0)).endsWith(", 2 songs"));
    key(Qt::Key_1, Qt::ControlModifier);
    QCOMPARE(name(list()), QString("All songs, 3 songs"));
}

void TestReadingOut::theListIsThatOfTheViewInSight()
{
    QFETCH(bool, local);
    QFETCH(bool, table);
    fill(local, {"Ferry", "Lamp"});
    showTable(table);
    QAccessibleInterface* const song = list()->child(1);
    const QRect place = view()->visualRect(view()->model()->index(1, 0));
    QCOMPARE(song->rect(), QRect(view()->viewport()->mapToGlobal(place.topLeft()), place.size()));
    QCOMPARE(of(view())->childCount(), 0);
    song->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
    QTRY_COMPARE(shownTitle(), QString("Lamp"));
    QCOMPARE(row(), 1);
}

void TestReadingOut::whatIsFoundIsCounted()
{
    QFETCH(bool, local);
    QFETCH(bool, table);
    fill(local, {"Ferry", "Ferry", "Lamp"});
    showTable(table);
    part<QLineEdit>("m_findField")->setText("lamp");
    QCOMPARE(name(list()), QString("All songs, 1 of 3 songs"));
    QCOMPARE(items(), QStringList({"Lamp"}));
    QCOMPARE(of(part<QWidget>("m_findField"))->text(QAccessible::Description), QString("1 of 3"));
    part<QLineEdit>("m_findField")->setText("nowhere");
    QCOMPARE(name(list()), QString("All songs, 0 of 3 songs"));
    part<QLineEdit>("m_findField")->clear();
    QCOMPARE(name(list()), QString("All songs, 3 songs"));
}

void TestReadingOut::theMarkedSongHasTheFocus()
{
    QFETCH(bool, local);
    QFETCH(bool, table);
    fill(local, {"Ferry", "Lamp"});
    showTable(table);
    key(Qt::Key_End);
    QCOMPARE(list()->focusChild(), list()->child(1));
    key(Qt::Key_Home);
    QCOMPARE(list()->focusChild(), list()->child(0));
    part<QLineEdit>("m_findField")->setFocus();
    QCOMPARE(list()->focusChild(), nullptr);
}

/// Which orders the table as a click does; the grid has none.
void TestReadingOut::columnsCanBePressed()
{
    QFETCH(bool, local);
    fill(local, {"Lamp", "Ferry"});
    const auto columns = [this] { return all(of(m_window.get()), QAccessible::ColumnHeader); };
    QCOMPARE(columns(), QStringList());
    showTable(true);
    QCOMPARE(columns().mid(0, 3), QStringList({"Title", "Artist", "Album"}));
    QAccessibleInterface* const header = of(qobject_cast<QTableView*>(view())->horizontalHeader());
    QCOMPARE(header->parent(), of(part<QWidget>("m_middleMusicWidget")));
    QVERIFY(header->parent()->indexOfChild(header) >= 0);
    QAccessibleInterface* const title = header->child(0);
    QCOMPARE(header->childAt(title->rect().center().x(), title->rect().center().y()), title);
    const auto press = [&] {
        title->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
        QCoreApplication::processEvents();
        return title->text(QAccessible::Description);
    };
    QCOMPARE(press(), QString("In ascending order"));
    QCOMPARE(items(), QStringList({"Ferry", "Lamp"}));
    QCOMPARE(press(), QString("In descending order"));
    QCOMPARE(items(), QStringList({"Lamp", "Ferry"}));
    QCOMPARE(press(), QString());
    m_window->findChild<QWidget*>("m_middleMusicWidget")->setEnabled(false);
    QVERIFY(title->state().disabled);
    QCOMPARE(press(), QString());
}

void TestReadingOut::aGroupIsAListOfSentences()
{
    QFETCH(bool, local);
    fill(local, {"Ferry", "Ferry", "Ferry"});
    key(Qt::Key_3, Qt::ControlModifier);
    key(Qt::Key_Home);
    QAccessibleInterface* const copies = of(rows().first()->parentWidget());
    QCOMPARE(copies->role(), QAccessible::List);
    QCOMPARE(name(copies), QString("Songs of this group, 3 songs"));
    const QStringList sentences = all(copies, QAccessible::ListItem);
    QCOMPARE(sentences.size(), 3);
    QVERIFY(sentences.at(0).startsWith(local ? "Kept: Ferry, MP3, " : "Kept: Ferry, mp3, "));
    QVERIFY(sentences.at(0).endsWith(" kilobits per second"));
    QVERIFY(sentences.at(2).startsWith("To be deleted: Ferry, "));
    key(Qt::Key_Space);
    QVERIFY(name(copies->child(0)).startsWith("To be deleted: Ferry, "));
}

void TestReadingOut::theRowChosenSaysSo()
{
    fill(true, {"Ferry"});
    const auto said = [this](const char* row) {
        return of(part<QWidget>(row))->text(QAccessible::Description);
    };
    QCOMPARE(said("m_btnMusicAll"), QString("In sight"));
    QCOMPARE(said("m_btnMusicUndefined"), QString());
    key(Qt::Key_2, Qt::ControlModifier);
    QCOMPARE(said("m_btnMusicAll"), QString());
    QCOMPARE(said("m_btnMusicUndefined"), QString("In sight"));
}

void TestReadingOut::panelsOutOfSightAreNotThere()
{
    fill(true, {"Ferry", "Ferry"});
    const auto panels = [this] { return all(of(m_window.get()), QAccessible::Grouping); };
    QCOMPARE(panels(), QStringList());
    key(Qt::Key_Home);
    QCOMPARE(panels(), QStringList({"Song details"}));
    key(Qt::Key_3, Qt::ControlModifier);
    QCOMPARE(panels(), QStringList());
    key(Qt::Key_Home);
    QCOMPARE(panels(), QStringList({"Group of duplicates"}));
    QCOMPARE(all(of(m_window.get()), QAccessible::List),
             QStringList({"Duplicate songs, 1 group", "Songs of this group, 2 songs"}));
}

void TestReadingOut::editorsHaveTheNamesOfTheirLabels()
{
    fill(true, {"Ferry"});
    key(Qt::Key_Home);
    QAccessibleInterface* const panel = of(part<QWidget>("m_musicDetailedWidget"));
    QCOMPARE(all(panel, QAccessible::EditableText), QStringList());
    QCOMPARE(all(panel, QAccessible::Graphic), QStringList({"Cover"}));
    key(Qt::Key_F2);
    QCOMPARE(all(panel, QAccessible::EditableText),
             QStringList({"Title:", "Artist:", "Album:", "Year:", "Track No:"}));
    QVERIFY(all(panel, QAccessible::PushButton).contains("Cover"));
    const auto relations = of(part<QWidget>("m_comboGenre"))->relations(QAccessible::Label);
    QCOMPARE(relations.size(), 1);
    QCOMPARE(name(relations.first().first), QString("Genre:"));
}

QTEST_MAIN(TestReadingOut)
#include "tst_readingout.moc"
