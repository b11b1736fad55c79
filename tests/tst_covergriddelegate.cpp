#include "dupmusicinfo.h"
#include "dupmusiclistmodel.h"
#include "musiclistmodel.h"
#include "songfixtures.h"
#include "views/covergriddelegate.h"
#include "views/paintdupnumberdelegate.h"

#include <QListView>
#include <QTemporaryDir>
#include <QtTest>

using namespace Fixtures;

namespace {
void setUp(QListView& view, QAbstractItemModel* model, QAbstractItemDelegate* delegate)
{
    view.setViewMode(QListView::IconMode);
    view.setResizeMode(QListView::Adjust);
    view.setIconSize(QSize(100, 120));
    view.setGridSize(QSize(120, 140));
    view.setMovement(QListView::Snap);
    view.setUniformItemSizes(true);
    view.setItemDelegate(delegate);
    view.setModel(model);
    view.resize(700, 300);
    view.show();
}
} // namespace

/// Grids whose songs have covers and titles of very different sizes, the smallest ones at the ends.
class TestCoverGridDelegate : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void aSmallCoverMakesNoCellSmall();
    void bothGridsHaveEqualCells();
    void drawsEveryCoverWhole();

private:
    QTemporaryDir m_folder;
    std::vector<std::unique_ptr<Song>> m_songs;
    std::vector<std::unique_ptr<DupMusicInfo>> m_groups;
    QList<QMusicInfo*> m_list;
    QList<DupMusicInfo*> m_groupList;
};

void TestCoverGridDelegate::initTestCase()
{
    genericCover();
    skinPicture(QStringLiteral("pic_number.png"), plain(17, 17, Qt::red));
    const QString small = savePicture(plain(16, 16, Qt::blue), m_folder.filePath("small"));
    const QString large = savePicture(plain(400, 400, Qt::blue), m_folder.filePath("large"));
    for (int i = 0; i < 5; ++i) {
        Texts texts;
        texts.title = i == 2 ? QByteArray(80, 'W') : QByteArray("i");
        texts.coverPath = i % 4 ? large : small;
        m_songs.push_back(makeSong(false, texts));
        m_list.append(&m_songs.back()->info);
        m_groups.push_back(std::make_unique<DupMusicInfo>());
        m_groups.back()->musicList.append(&m_songs.back()->info);
        m_groupList.append(m_groups.back().get());
    }
}

void TestCoverGridDelegate::aSmallCoverMakesNoCellSmall()
{
    MusicListModel model;
    model.setDataSourceList(&m_list, 1, false);
    QListView view;
    CoverGridDelegate delegate;
    setUp(view, &model, &delegate);
    for (int row = 0; row < m_list.size(); ++row) {
        const QRect cell = view.visualRect(model.index(row, 0));
        QCOMPARE(cell.size(), view.visualRect(model.index(0, 0)).size());
        QVERIFY(cell.width() >= 100 && cell.width() <= 120);
        QVERIFY(cell.height() > 100 && cell.height() <= 140);
    }
}

void TestCoverGridDelegate::bothGridsHaveEqualCells()
{
    MusicListModel songs;
    songs.setDataSourceList(&m_list, 1, false);
    DupMusicListModel groups;
    groups.setDupMusicDataSource(&m_groupList, 1, false);
    QListView songGrid;
    QListView groupGrid;
    CoverGridDelegate delegate;
    PaintDupNumberDelegate numbers;
    setUp(songGrid, &songs, &delegate);
    setUp(groupGrid, &groups, &numbers);
    for (int row = 0; row < m_list.size(); ++row)
        QCOMPARE(groupGrid.visualRect(groups.index(row, 0)), songGrid.visualRect(songs.index(row, 0)));
}

void TestCoverGridDelegate::drawsEveryCoverWhole()
{
    MusicListModel model;
    model.setDataSourceList(&m_list, 1, false);
    QListView view;
    CoverGridDelegate delegate;
    setUp(view, &model, &delegate);
    const QImage drawn = view.viewport()->grab().toImage();
    const QRect cell = view.visualRect(model.index(1, 0));
    const int middle = cell.center().x();
    int across = 0;
    for (int x = cell.left(); x <= cell.right(); ++x)
        across += drawn.pixelColor(x, cell.top() + 50) == QColor(Qt::blue) ? 1 : 0;
    int down = 0;
    for (int y = cell.top(); y <= cell.bottom(); ++y)
        down += drawn.pixelColor(middle, y) == QColor(Qt::blue) ? 1 : 0;
    QCOMPARE(across, 100);
    QCOMPARE(down, 100);
}

QTEST_MAIN(TestCoverGridDelegate)
#include "tst_covergriddelegate.moc"
