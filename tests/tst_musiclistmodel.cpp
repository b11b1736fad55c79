#include "covers/coverloader.h"
#include "musiclistmodel.h"
#include "songfixtures.h"

#include <QAbstractItemModelTester>
#include <QBrush>
#include <QTemporaryDir>
#include <QtTest>

using namespace Fixtures;

class TestMusicListModel : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void isEmptyBeforeASourceIsSet();
    void theColumnModeGivesTheColumns_data();
    void theColumnModeGivesTheColumns();
    void satisfiesTheModelTester_data();
    void satisfiesTheModelTester();
    void settingASourceAndRefreshingReset();
    void anIndexCarriesItsSong();
    void aRowBeyondTheListIsInvalid();
    void showsTheTextsOfTheMode_data();
    void showsTheTextsOfTheMode();
    void showsUnknownInRedForEmptyValues_data();
    void showsUnknownInRedForEmptyValues();
    void showsNumbersUnsigned();
    void theSeventhColumnIsEmptyAndRed();
    void anUntitledSongIsRedInTheGridToo();
    void rowsAreStripedInTablesOnly();
    void everyCellHasTheToolTipAndIsCentred();
    void otherRolesAreInvalid();
    void headersNameTheColumnsOfTables();
    void onlyTheGridsFirstColumnHasACover();
    void aMissingCoverFileShowsTheGenericCover();
    void aCoverOfAnotherShapeIsStretched();
    void aSquareCoverKeepsItsSize();
    void aCoverReplacedOnDiskShowsAtOnce();

private:
    void addSong(bool local, const Texts& texts = Texts())
    {
        m_songs.push_back(makeSong(local, texts));
        m_list.append(&m_songs.back()->info);
    }
    static QIcon cover(const MusicListModel& model, int row)
    {
        return model.index(row, 0).data(Qt::DecorationRole).value<QIcon>();
    }

    std::vector<std::unique_ptr<Song>> m_songs;
    QList<QMusicInfo*> m_list;
    std::unique_ptr<QTemporaryDir> m_folder;
};

void TestMusicListModel::initTestCase()
{
    QVERIFY(!genericCover().isNull());
}

void TestMusicListModel::init()
{
    m_list.clear();
    m_songs.clear();
    m_folder = std::make_unique<QTemporaryDir>();
}

void TestMusicListModel::isEmptyBeforeASourceIsSet()
{
    MusicListModel model;
    QCOMPARE(model.rowCount(), 0);
    QCOMPARE(model.columnCount(), 0);
    QVERIFY(!model.index(0, 0).isValid());
    model.refresh();
    QCOMPARE(model.rowCount(), 0);
    model.setDataSourceList(nullptr, 6, false);
    QCOMPARE(model.columnCount(), 0);
}

void TestMusicListModel::theColumnModeGivesTheColumns_data()
{
    QTest::addColumn<int>("mode");
    QTest::addColumn<int>("columns");
    QTest::newRow("grid") << 1 << 1;
    QTest::newRow("table") << 6 << 6;
    QTest::newRow("duplicates") << 7 << 7;
    QTest::newRow("0") << 0 << 6;
    QTest::newRow("2") << 2 << 6;
    QTest::newRow("8") << 8 << 6;
    QTest::newRow("-1") << -1 << 6;
}

void TestMusicListModel::theColumnModeGivesTheColumns()
{
    QFETCH(int, mode);
    MusicListModel model;
    model.setDataSourceList(&m_list, mode, true);
    QTEST(model.columnCount(), "columns");
    QCOMPARE(model.rowCount(), 0);
}

void TestMusicListModel::satisfiesTheModelTester_data()
{
    QTest::addColumn<bool>("local");
    QTest::newRow("iTunes") << false;
    QTest::newRow("local") << true;
}

void TestMusicListModel::satisfiesTheModelTester()
{
    QFETCH(bool, local);
    const ModeGuard mode(local);
    MusicListModel model;
    QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
    for (const int columns : {1, 6, 7}) {
        for (int songs = 0; songs < 3; ++songs)
            addSong(local);
        model.setDataSourceList(&m_list, columns, false);
    }
    QCOMPARE(model.rowCount(), 9);
    m_list.clear();
    model.refresh();
    QCOMPARE(model.rowCount(), 0);
}

void TestMusicListModel::settingASourceAndRefreshingReset()
{
    MusicListModel model;
    QSignalSpy begins(&model, &QAbstractItemModel::modelAboutToBeReset);
    QSignalSpy ends(&model, &QAbstractItemModel::modelReset);
    model.setDataSourceList(&m_list, 6, false);
    QCOMPARE(begins.count(), 1);
    QCOMPARE(ends.count(), 1);
    model.refresh();
    QCOMPARE(begins.count(), 2);
    QCOMPARE(ends.count(), 2);
}

void TestMusicListModel::anIndexCarriesItsSong()
{
    addSong(false);
    addSong(false);
    MusicListModel model;
    model.setDataSourceList(&m_list, 6, false);
    QMusicInfo* second = model.nodeFromIndex(model.index(1, 4));
    QCOMPARE(second, m_list.at(1));
    QCOMPARE(model.index(1, 4).internalPointer(), static_cast<void*>(second));
    QVERIFY(!model.nodeFromIndex(QModelIndex()));
    QVERIFY(!model.parent(model.index(1, 0)).isValid());
    QVERIFY(!model.index(-1, 0).isValid());
    QVERIFY(!model.index(0, -1).isValid());
    QVERIFY(model.index(0, 9).isValid()); // columns are not counted here
    QVERIFY(!model.index(0, 9).data().isValid());
    QVERIFY(!model.index(0, 9).data(Qt::ForegroundRole).isValid());
}

void TestMusicListModel::aRowBeyondTheListIsInvalid()
{
    addSong(false);
    MusicListModel model;
    model.setDataSourceList(&m_list, 6, false);
    QVERIFY(!model.index(1, 0).isValid());
    QVERIFY(!model.data(model.index(1, 0), Qt::DisplayRole).isValid());
}

void TestMusicListModel::showsTheTextsOfTheMode_data()
{
    satisfiesTheModelTester_data();
}

void TestMusicListModel::showsTheTextsOfTheMode()
{
    QFETCH(bool, local);
    const ModeGuard mode(local);
    addSong(local);
    MusicListModel model;
    model.setDataSourceList(&m_list, 6, false);
    const QStringList texts{QStringLiteral("Täxt"), "Artist", "Album", "Genre", "1999", "7"};
    for (int column = 0; column < texts.size(); ++column) {
        QCOMPARE(model.index(0, column).data().toString(), texts.at(column));
        QVERIFY(!model.index(0, column).data(Qt::ForegroundRole).isValid());
    }
    // Without the data of the mode now in force there is nothing to show.
    const ModeGuard otherMode(!local);
    for (int column = 0; column < texts.size(); ++column)
        QCOMPARE(model.index(0, column).data().toString(), QStringLiteral("unknown"));
}

void TestMusicListModel::showsUnknownInRedForEmptyValues_data()
{
    QTest::addColumn<bool>("local");
    QTest::addColumn<int>("column");
    for (const bool local : {false, true})
        for (int column = 0; column < 6; ++column)
            QTest::addRow("%s column %d", local ? "local" : "iTunes", column) << local << column;
}

void TestMusicListModel::showsUnknownInRedForEmptyValues()
{
    QFETCH(bool, local);
    QFETCH(int, column);
    const ModeGuard mode(local);
    Texts texts;
    QByteArray* const fields[] = {&texts.title, &texts.artist, &texts.album, &texts.genre};
    if (column < 4)
        fields[column]->clear();
    else
        (column == 4 ? texts.year : texts.track) = 0;
    addSong(local, texts);
    MusicListModel model;
    model.setDataSourceList(&m_list, 6, false);
    for (int other = 0; other < 6; ++other) {
        const bool empty = other == column;
        QCOMPARE(model.index(0, other).data().toString() == QLatin1String("unknown"), empty);
        const QVariant foreground = model.index(0, other).data(Qt::ForegroundRole);
        QCOMPARE(foreground.isValid(), empty);
        if (empty)
            QCOMPARE(foreground.value<QBrush>(), QBrush(QColor(255, 0, 0, 255)));
    }
    if (!local && column < 4) { // a text that the library left out
        const char** const pointers[] = {&m_songs[0]->record.name, &m_songs[0]->record.artist,
                                         &m_songs[0]->record.album, &m_songs[0]->record.genre};
        *pointers[column] = nullptr;
        QCOMPARE(model.index(0, column).data().toString(), QStringLiteral("unknown"));
    }
}

void TestMusicListModel::showsNumbersUnsigned()
{
    const ModeGuard mode(true);
    Texts texts;
    texts.year = quint64(-1);
    texts.track = quint64(1) << 40;
    addSong(true, texts);
    MusicListModel model;
    model.setDataSourceList(&m_list, 6, false);
    QCOMPARE(model.index(0, 4).data().toString(), QStringLiteral("18446744073709551615"));
    QCOMPARE(model.index(0, 5).data().toString(), QStringLiteral("1099511627776"));
}

void TestMusicListModel::theSeventhColumnIsEmptyAndRed()
{
    addSong(false);
    MusicListModel model;
    model.setDataSourceList(&m_list, 7, false);
    QVERIFY(!model.index(0, 6).data().isValid());
    QCOMPARE(model.index(0, 6).data(Qt::ForegroundRole).value<QBrush>(), QBrush(QColor(255, 0, 0)));
}

void TestMusicListModel::anUntitledSongIsRedInTheGridToo()
{
    Texts untitled;
    untitled.title.clear();
    addSong(false, untitled);
    addSong(false);
    MusicListModel model;
    model.setDataSourceList(&m_list, 1, false);
    QCOMPARE(model.index(0, 0).data().toString(), QStringLiteral("unknown"));
    QCOMPARE(model.index(0, 0).data(Qt::ForegroundRole).value<QBrush>(), QBrush(QColor(255, 0, 0)));
    QVERIFY(!model.index(1, 0).data(Qt::ForegroundRole).isValid());
}

void TestMusicListModel::rowsAreStripedInTablesOnly()
{
    for (int songs = 0; songs < 3; ++songs)
        addSong(false);
    MusicListModel model;
    model.setDataSourceList(&m_list, 6, false);
    const QBrush white(Qt::white);
    const QBrush blue(QColor(240, 246, 252, 255));
    for (int column = 0; column < 6; ++column) {
        QCOMPARE(model.index(0, column).data(Qt::BackgroundRole).value<QBrush>(), white);
        QCOMPARE(model.index(1, column).data(Qt::BackgroundRole).value<QBrush>(), blue);
        QCOMPARE(model.index(2, column).data(Qt::BackgroundRole).value<QBrush>(), white);
    }
    model.setDataSourceList(&m_list, 1, false);
    QVERIFY(!model.index(0, 0).data(Qt::BackgroundRole).isValid());
}

void TestMusicListModel::everyCellHasTheToolTipAndIsCentred()
{
    addSong(false);
    MusicListModel model;
    for (const int columns : {1, 6, 7}) {
        model.setDataSourceList(&m_list, columns, false);
        for (int column = 0; column < columns; ++column) {
            const QModelIndex index = model.index(0, column);
            QCOMPARE(index.data(Qt::ToolTipRole).toString(), QStringLiteral("Double click to start playing"));
            QCOMPARE(index.data(Qt::TextAlignmentRole).toInt(), int(Qt::AlignCenter));
        }
    }
    QVERIFY(!model.data(QModelIndex(), Qt::ToolTipRole).isValid());
}

void TestMusicListModel::otherRolesAreInvalid()
{
    addSong(false);
    MusicListModel model;
    model.setDataSourceList(&m_list, 6, false);
    for (const int role :
         {int(Qt::EditRole), int(Qt::StatusTipRole), int(Qt::WhatsThisRole), int(Qt::FontRole),
          int(Qt::CheckStateRole), int(Qt::SizeHintRole), int(Qt::UserRole)})
        QVERIFY(!model.index(0, 0).data(role).isValid());
    QVERIFY(!(model.index(0, 0).flags() & Qt::ItemIsEditable));
}

void TestMusicListModel::headersNameTheColumnsOfTables()
{
    const QStringList names{"Title", "Artist", "Album", "Genre", "Year", "Track ID", "Duplicates"};
    MusicListModel model;
    for (const int columns : {6, 7}) {
        model.setDataSourceList(&m_list, columns, false);
        for (int section = 0; section < names.size(); ++section)
            QCOMPARE(model.headerData(section, Qt::Horizontal).toString(), names.at(section));
        QVERIFY(!model.headerData(7, Qt::Horizontal).isValid());
        QVERIFY(!model.headerData(-1, Qt::Horizontal).isValid());
        QVERIFY(!model.headerData(0, Qt::Vertical).isValid());
        QVERIFY(!model.headerData(0, Qt::Horizontal, Qt::ToolTipRole).isValid());
    }
    model.setDataSourceList(&m_list, 1, false);
    QVERIFY(!model.headerData(0, Qt::Horizontal).isValid());
}

void TestMusicListModel::onlyTheGridsFirstColumnHasACover()
{
    addSong(false);
    MusicListModel model;
    model.setDataSourceList(&m_list, 6, false);
    for (int column = 0; column < 6; ++column)
        QVERIFY(!model.index(0, column).data(Qt::DecorationRole).isValid());
    model.setDataSourceList(&m_list, 1, false);
    QVERIFY(!cover(model, 0).isNull());
    QVERIFY(!model.index(0, 1).data(Qt::DecorationRole).isValid());
}

void TestMusicListModel::aMissingCoverFileShowsTheGenericCover()
{
    const QImage generic = pixels(CoverLoader::icon(CoverLoader::genericCoverPath()).pixmap(100, 120));
    QVERIFY(!generic.isNull());
    Texts texts;
    for (const bool local : {false, true}) {
        const ModeGuard mode(local);
        for (const QString& path : {QString(), m_folder->filePath("nothing"), m_folder->path()}) {
            init();
            texts.coverPath = path;
            addSong(local, texts);
            MusicListModel model;
            model.setDataSourceList(&m_list, 1, false);
            QCOMPARE(pixels(cover(model, 0).pixmap(100, 120)), generic);
        }
    }
}

void TestMusicListModel::aCoverOfAnotherShapeIsStretched()
{
    const QImage picture = noise(400, 300);
    Texts texts;
    texts.coverPath = savePicture(picture, m_folder->filePath("cover"));
    const ModeGuard mode(true);
    addSong(true, texts);
    MusicListModel model;
    model.setDataSourceList(&m_list, 1, false);
    QCOMPARE(cover(model, 0).availableSizes(), QList<QSize>{QSize(300, 300)});
    QCOMPARE(pixels(cover(model, 0).pixmap(300, 300)),
             pixels(picture.scaled(300, 300, Qt::IgnoreAspectRatio, Qt::FastTransformation)));
}

void TestMusicListModel::aSquareCoverKeepsItsSize()
{
    const QImage picture = noise(500, 500);
    Texts texts;
    texts.coverPath = savePicture(picture, m_folder->filePath("cover"));
    addSong(false, texts);
    MusicListModel model;
    model.setDataSourceList(&m_list, 1, false);
    QCOMPARE(cover(model, 0).availableSizes(), QList<QSize>{QSize(500, 500)});
    QCOMPARE(pixels(cover(model, 0).pixmap(500, 500)), pixels(picture));
    // Repeated requests give the same picture, not a copy.
    QCOMPARE(cover(model, 0).pixmap(100, 120).cacheKey(), cover(model, 0).pixmap(100, 120).cacheKey());
}

void TestMusicListModel::aCoverReplacedOnDiskShowsAtOnce()
{
    Texts texts;
    texts.coverPath = savePicture(plain(50, 50, Qt::red), m_folder->filePath("cover"));
    addSong(false, texts);
    MusicListModel model;
    model.setDataSourceList(&m_list, 1, false);
    QCOMPARE(cover(model, 0).pixmap(50, 50).toImage().pixelColor(9, 9), QColor(Qt::red));
    savePicture(plain(80, 80, Qt::blue), texts.coverPath);
    QCOMPARE(cover(model, 0).pixmap(50, 50).toImage().pixelColor(9, 9), QColor(Qt::blue));
}

QTEST_MAIN(TestMusicListModel)
#include "tst_musiclistmodel.moc"
