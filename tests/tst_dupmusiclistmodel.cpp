#include "covers/coverloader.h"
#include "dupmusicinfo.h"
#include "dupmusiclistmodel.h"
#include "songfixtures.h"

#include <QAbstractItemModelTester>
#include <QBrush>
#include <QTemporaryDir>
#include <QtTest>

using namespace Fixtures;

class TestDupMusicListModel : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void isEmptyBeforeASourceIsSet();
    void everyColumnModeButTheGridHasSevenColumns();
    void satisfiesTheModelTester();
    void settingASourceAndRefreshingReset();
    void anIndexCarriesItsGroup();
    void showsItsFirstSong_data();
    void showsItsFirstSong();
    void emptyValuesAreUnknownInTheDefaultColour();
    void anUntitledGroupHasAnEmptyCaption();
    void aGroupWithoutSongsHasNoData();
    void rolesAboveTheBackgroundAreInvalid();
    void rowsAreStripedInTablesOnly();
    void everyCellHasTheToolTipAndIsCentred();
    void lyricsStandsOverTheTrackNumber();
    void showsTheFirstSongsCover();
    void whatIsNoPictureShowsTheGenericCover();
    void aRepaintDecodesNothing();

private:
    DupMusicInfo* addGroup(bool local, int songs, const Texts& texts = Texts())
    {
        m_groups.push_back(std::make_unique<DupMusicInfo>());
        for (int i = 0; i < songs; ++i) {
            Texts own = texts;
            if (i > 0)
                own.artist += " " + QByteArray::number(i);
            m_songs.push_back(makeSong(local, own));
            m_groups.back()->musicList.append(&m_songs.back()->info);
        }
        m_list.append(m_groups.back().get());
        return m_groups.back().get();
    }
    QPixmap cover(const DupMusicListModel& model, int row, int edge) const
    {
        return model.index(row, 0).data(Qt::DecorationRole).value<QIcon>().pixmap(edge, edge);
    }

    std::vector<std::unique_ptr<Song>> m_songs;
    std::vector<std::unique_ptr<DupMusicInfo>> m_groups;
    QList<DupMusicInfo*> m_list;
    std::unique_ptr<QTemporaryDir> m_folder;
};

void TestDupMusicListModel::initTestCase()
{
    QVERIFY(!genericCover().isNull());
}

void TestDupMusicListModel::init()
{
    m_list.clear();
    m_groups.clear();
    m_songs.clear();
    m_folder = std::make_unique<QTemporaryDir>();
}

void TestDupMusicListModel::isEmptyBeforeASourceIsSet()
{
    DupMusicListModel model;
    QCOMPARE(model.rowCount(), 0);
    QCOMPARE(model.columnCount(), 0);
    QVERIFY(!model.index(0, 0).isValid());
    QVERIFY(!model.index(-1, -1).isValid());
    QVERIFY(!model.headerData(0, Qt::Horizontal).isValid()); // a grid until told otherwise
}

void TestDupMusicListModel::everyColumnModeButTheGridHasSevenColumns()
{
    DupMusicListModel model;
    for (const int mode : {-1, 0, 1, 2, 6, 7, 8}) {
        model.setDupMusicDataSource(&m_list, mode, false);
        QCOMPARE(model.columnCount(), mode == 1 ? 1 : 7);
    }
}

void TestDupMusicListModel::satisfiesTheModelTester()
{
    DupMusicListModel model;
    QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
    for (const bool local : {false, true}) {
        const ModeGuard mode(local);
        init();
        addGroup(local, 2);
        addGroup(local, 0);
        addGroup(local, 1);
        for (const int columns : {1, 6, 7}) {
            model.setDupMusicDataSource(&m_list, columns, false);
            QCOMPARE(model.rowCount(), 3);
        }
        m_list.clear();
        model.refresh();
    }
}

void TestDupMusicListModel::settingASourceAndRefreshingReset()
{
    DupMusicListModel model;
    QSignalSpy begins(&model, &QAbstractItemModel::modelAboutToBeReset);
    QSignalSpy ends(&model, &QAbstractItemModel::modelReset);
    model.setDupMusicDataSource(&m_list, 7, false);
    model.refresh();
    QCOMPARE(begins.count(), 2);
    QCOMPARE(ends.count(), 2);
}

void TestDupMusicListModel::anIndexCarriesItsGroup()
{
    addGroup(false, 2);
    DupMusicInfo* second = addGroup(false, 3);
    DupMusicListModel model;
    model.setDupMusicDataSource(&m_list, 7, false);
    QCOMPARE(model.nodeFromIndex(model.index(1, 6)), second);
    QCOMPARE(model.index(1, 0).internalPointer(), static_cast<void*>(second));
    QVERIFY(!model.nodeFromIndex(QModelIndex()));
    QVERIFY(!model.parent(model.index(1, 0)).isValid());
    QVERIFY(!model.index(2, 0).isValid());
    QVERIFY(!model.index(-1, 0).isValid());
    QVERIFY(!model.index(0, -1).isValid());
}

void TestDupMusicListModel::showsItsFirstSong_data()
{
    QTest::addColumn<bool>("local");
    QTest::newRow("iTunes") << false;
    QTest::newRow("local") << true;
}

void TestDupMusicListModel::showsItsFirstSong()
{
    QFETCH(bool, local);
    const ModeGuard mode(local);
    addGroup(local, 12);
    DupMusicListModel model;
    model.setDupMusicDataSource(&m_list, 7, false);
    const QStringList texts{QStringLiteral("Täxt"), "Artist", "Album", "Genre", "1999", "7"};
    for (int column = 0; column < texts.size(); ++column)
        QCOMPARE(model.index(0, column).data().toString(), texts.at(column));
    QCOMPARE(model.index(0, 6).data(), QVariant(12));
    QVERIFY(!model.index(0, 7).data().isValid());
    model.setDupMusicDataSource(&m_list, 1, false);
    QCOMPARE(model.index(0, 0).data().toString(), QStringLiteral("Täxt"));
}

void TestDupMusicListModel::emptyValuesAreUnknownInTheDefaultColour()
{
    Texts nothing;
    nothing.title = nothing.artist = nothing.album = nothing.genre = QByteArray();
    nothing.year = nothing.track = 0;
    for (const bool local : {false, true}) {
        const ModeGuard mode(local);
        init();
        addGroup(local, 2, nothing);
        DupMusicListModel model;
        model.setDupMusicDataSource(&m_list, 7, false);
        for (int column = 0; column < 6; ++column) {
            QCOMPARE(model.index(0, column).data().toString(), QStringLiteral("unknown"));
            QVERIFY(!model.index(0, column).data(Qt::ForegroundRole).isValid());
        }
    }
}

void TestDupMusicListModel::anUntitledGroupHasAnEmptyCaption()
{
    Texts untitled;
    untitled.title.clear();
    for (const bool local : {false, true}) {
        const ModeGuard mode(local);
        init();
        addGroup(local, 2, untitled);
        DupMusicListModel model;
        model.setDupMusicDataSource(&m_list, 1, false);
        const QVariant caption = model.index(0, 0).data();
        QVERIFY(caption.isValid());
        QCOMPARE(caption.toString(), QString());
    }
}

void TestDupMusicListModel::aGroupWithoutSongsHasNoData()
{
    addGroup(false, 0);
    DupMusicListModel model;
    for (const int columns : {1, 7}) {
        model.setDupMusicDataSource(&m_list, columns, false);
        for (int column = 0; column < columns; ++column)
            for (int role = 0; role <= Qt::InitialSortOrderRole; ++role)
                QVERIFY(!model.index(0, column).data(role).isValid());
    }
}

void TestDupMusicListModel::rolesAboveTheBackgroundAreInvalid()
{
    addGroup(false, 2);
    DupMusicListModel model;
    model.setDupMusicDataSource(&m_list, 7, false);
    for (int role = Qt::BackgroundRole + 1; role < Qt::UserRole + 2; ++role)
        QVERIFY(!model.index(0, 0).data(role).isValid());
    for (const int role :
         {int(Qt::EditRole), int(Qt::StatusTipRole), int(Qt::WhatsThisRole), int(Qt::FontRole)})
        QVERIFY(!model.index(0, 0).data(role).isValid());
}

void TestDupMusicListModel::rowsAreStripedInTablesOnly()
{
    addGroup(false, 2);
    addGroup(false, 2);
    DupMusicListModel model;
    model.setDupMusicDataSource(&m_list, 7, false);
    for (int column = 0; column < 7; ++column) {
        QCOMPARE(model.index(0, column).data(Qt::BackgroundRole).value<QBrush>(), QBrush(Qt::white));
        QCOMPARE(model.index(1, column).data(Qt::BackgroundRole).value<QBrush>(),
                 QBrush(QColor(240, 246, 252, 255)));
    }
    model.setDupMusicDataSource(&m_list, 1, false);
    QVERIFY(!model.index(0, 0).data(Qt::BackgroundRole).isValid());
}

void TestDupMusicListModel::everyCellHasTheToolTipAndIsCentred()
{
    addGroup(false, 2);
    DupMusicListModel model;
    for (const int columns : {1, 7}) {
        model.setDupMusicDataSource(&m_list, columns, false);
        for (int column = 0; column < columns; ++column) {
            const QModelIndex index = model.index(0, column);
            QCOMPARE(index.data(Qt::ToolTipRole).toString(), QStringLiteral("Double click to start playing"));
            QCOMPARE(index.data(Qt::TextAlignmentRole).toInt(), int(Qt::AlignCenter));
        }
    }
}

void TestDupMusicListModel::lyricsStandsOverTheTrackNumber()
{
    const QStringList names{"Title", "Artist", "Album", "Genre", "Year", "Lyrics", "Duplicates"};
    addGroup(false, 2);
    DupMusicListModel model;
    model.setDupMusicDataSource(&m_list, 6, false);
    for (int section = 0; section < names.size(); ++section)
        QCOMPARE(model.headerData(section, Qt::Horizontal).toString(), names.at(section));
    QCOMPARE(model.index(0, 5).data().toString(), QStringLiteral("7"));
    QVERIFY(!model.headerData(7, Qt::Horizontal).isValid());
    QVERIFY(!model.headerData(0, Qt::Vertical).isValid());
    QVERIFY(!model.headerData(0, Qt::Horizontal, Qt::DecorationRole).isValid());
    model.setDupMusicDataSource(&m_list, 1, false);
    QVERIFY(!model.headerData(0, Qt::Horizontal).isValid());
}

void TestDupMusicListModel::showsTheFirstSongsCover()
{
    const QImage square = noise(320, 320);
    const QImage wide = noise(400, 300);
    for (const bool local : {false, true}) {
        const ModeGuard mode(local);
        init();
        Texts texts;
        texts.coverPath = savePicture(square, m_folder->filePath("square"));
        addGroup(local, 2, texts);
        texts.coverPath = savePicture(wide, m_folder->filePath("wide"));
        addGroup(local, 2, texts);
        DupMusicListModel model;
        model.setDupMusicDataSource(&m_list, 7, false);
        QVERIFY(!model.index(0, 0).data(Qt::DecorationRole).isValid());
        model.setDupMusicDataSource(&m_list, 1, false);
        QCOMPARE(pixels(cover(model, 0, 500)), pixels(square));
        QCOMPARE(pixels(cover(model, 1, 500)),
                 pixels(wide.scaled(300, 300, Qt::IgnoreAspectRatio, Qt::FastTransformation)));
        QVERIFY(!model.index(0, 1).data(Qt::DecorationRole).isValid());
    }
}

void TestDupMusicListModel::whatIsNoPictureShowsTheGenericCover()
{
    const QImage generic = pixels(CoverLoader::icon(CoverLoader::genericCoverPath()).pixmap(100, 100));
    QVERIFY(!generic.isNull());
    Texts texts;
    for (const QString& path :
         {QString(), m_folder->filePath("nothing"), saveBytes("garbage", m_folder->filePath("garbage")),
          savePicture(noise(1, 500), m_folder->filePath("thin"))}) {
        texts.coverPath = path;
        addGroup(false, 2, texts);
    }
    DupMusicListModel model;
    model.setDupMusicDataSource(&m_list, 1, false);
    for (int row = 0; row < m_list.size(); ++row)
        QCOMPARE(pixels(cover(model, row, 100)), generic);
}

void TestDupMusicListModel::aRepaintDecodesNothing()
{
    Texts texts;
    texts.coverPath = savePicture(noise(600, 600), m_folder->filePath("cover"), "JPEG");
    addGroup(false, 2, texts);
    DupMusicListModel model;
    model.setDupMusicDataSource(&m_list, 1, false);
    const qint64 before = CoverLoader::decodeCount();
    const qint64 first = cover(model, 0, 100).cacheKey();
    for (int repaint = 0; repaint < 5; ++repaint)
        QCOMPARE(cover(model, 0, 100).cacheKey(), first);
    QCOMPARE(CoverLoader::decodeCount() - before, 1);
}

QTEST_MAIN(TestDupMusicListModel)
#include "tst_dupmusiclistmodel.moc"
