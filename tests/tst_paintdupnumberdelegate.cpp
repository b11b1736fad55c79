#include "common/skinpicture.h"
#include "dupmusicinfo.h"
#include "dupmusiclistmodel.h"
#include "songfixtures.h"
#include "views/paintdupnumberdelegate.h"

#include <QListView>
#include <QPainter>
#include <QTemporaryDir>
#include <QtTest>

using namespace Fixtures;

namespace {
const QSize cell(120, 140);

QRect changedRect(const QImage& before, const QImage& after)
{
    QRect changed;
    for (int y = 0; y < before.height(); ++y)
        for (int x = 0; x < before.width(); ++x)
            if (before.pixel(x, y) != after.pixel(x, y))
                changed |= QRect(x, y, 1, 1);
    return changed;
}
} // namespace

class TestPaintDupNumberDelegate : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void drawsTheBadgeAtItsPlace();
    void drawsTheCountOverTheBadge_data();
    void drawsTheCountOverTheBadge();
    void aGroupWithoutSongsGetsABadgeWithZero();
    void drawsNothingMoreForAnIndexWithoutAModel();
    void leavesThePainterAsItWas();
    void usesTheFinerBadgeOnDenseScreens();
    void offersNoEditor();

private:
    void setSongs(int count);
    /// A cell as the delegate paints it, moved away from the origin.
    QImage painted(const QItemDelegate& delegate, const QModelIndex& index, qreal density = 1) const;
    QImage badge(int songs, qreal density = 1) const;

    std::vector<std::unique_ptr<Song>> m_songs;
    DupMusicInfo m_group;
    QList<DupMusicInfo*> m_list;
    std::unique_ptr<DupMusicListModel> m_model;
    QImage m_badge;
};

void TestPaintDupNumberDelegate::initTestCase()
{
    genericCover();
    QImage standIn(17, 17, QImage::Format_ARGB32_Premultiplied);
    standIn.fill(QColor(200, 30, 30));
    m_badge = skinPicture(QStringLiteral("pic_number.png"), standIn);
    QVERIFY(!m_badge.isNull());
}

void TestPaintDupNumberDelegate::init()
{
    m_model = std::make_unique<DupMusicListModel>();
    setSongs(2);
}

void TestPaintDupNumberDelegate::setSongs(int count)
{
    m_songs.clear();
    m_group.musicList.clear();
    for (int i = 0; i < count; ++i) {
        m_songs.push_back(makeSong(false));
        m_group.musicList.append(&m_songs.back()->info);
    }
    m_list = {&m_group};
    m_model->setDupMusicDataSource(&m_list, 1, false);
}

QImage TestPaintDupNumberDelegate::painted(const QItemDelegate& delegate, const QModelIndex& index,
                                           qreal density) const
{
    QImage image(QSize(200, 200) * density, QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(density);
    image.fill(QColor(90, 90, 90));
    QStyleOptionViewItem option;
    option.rect = QRect(QPoint(10, 20), cell);
    option.decorationSize = QSize(100, 120);
    option.decorationPosition = QStyleOptionViewItem::Top;
    QPainter painter(&image);
    delegate.paint(&painter, option, index);
    return image;
}

/// What lies over the base delegate's cell: the picture in its square and the count.
QImage TestPaintDupNumberDelegate::badge(int songs, qreal density) const
{
    const QItemDelegate base;
    QImage image = painted(base, m_model->index(0, 0), density);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    const SkinPicture picture(QIOrvoUtil::getResourcePath() + QLatin1String("/Image/pic_number.png"));
    const int right = 10 + 120 - 1;
    painter.drawImage(QRect(right - 21, 20 + 2, 17, 17), picture.image(density));
    painter.setFont(QFont(QStringLiteral("Tahoma"), 9, 50, false));
    painter.setPen(QColor(255, 255, 255));
    painter.drawText(QPoint(right - 15, 20 + 13), QString::number(songs));
    return image;
}

void TestPaintDupNumberDelegate::drawsTheBadgeAtItsPlace()
{
    const PaintDupNumberDelegate delegate;
    const QItemDelegate base;
    const QModelIndex index = m_model->index(0, 0);
    const QRect changed = changedRect(painted(base, index), painted(delegate, index));
    QVERIFY(!changed.isEmpty());
    // The item's last column is 129 and its first row 20.
    QVERIFY(QRect(108, 22, 17, 17).contains(changed));
}

void TestPaintDupNumberDelegate::drawsTheCountOverTheBadge_data()
{
    QTest::addColumn<int>("songs");
    QTest::newRow("two") << 2;
    QTest::newRow("twelve, not centred") << 12;
    QTest::newRow("a hundred") << 100;
}

void TestPaintDupNumberDelegate::drawsTheCountOverTheBadge()
{
    QFETCH(int, songs);
    setSongs(songs);
    const PaintDupNumberDelegate delegate;
    QCOMPARE(painted(delegate, m_model->index(0, 0)), badge(songs));
}

void TestPaintDupNumberDelegate::aGroupWithoutSongsGetsABadgeWithZero()
{
    setSongs(0);
    const PaintDupNumberDelegate delegate;
    QCOMPARE(painted(delegate, m_model->index(0, 0)), badge(0));
}

void TestPaintDupNumberDelegate::drawsNothingMoreForAnIndexWithoutAModel()
{
    const PaintDupNumberDelegate delegate;
    const QItemDelegate base;
    QCOMPARE(painted(delegate, QModelIndex()), painted(base, QModelIndex()));
}

void TestPaintDupNumberDelegate::leavesThePainterAsItWas()
{
    const PaintDupNumberDelegate delegate;
    QImage image(200, 200, QImage::Format_ARGB32_Premultiplied);
    QPainter painter(&image);
    painter.setPen(Qt::green);
    const QFont font = painter.font();
    QStyleOptionViewItem option;
    option.rect = QRect(QPoint(), cell);
    delegate.paint(&painter, option, m_model->index(0, 0));
    QCOMPARE(painter.pen(), QPen(Qt::green));
    QCOMPARE(painter.font(), font);
}

void TestPaintDupNumberDelegate::usesTheFinerBadgeOnDenseScreens()
{
    // Both files are laid where no other test looks for them.
    QTemporaryDir folder;
    savePicture(plain(17, 17, Qt::red), folder.filePath("badge.png"));
    const SkinPicture alone(folder.filePath("badge.png"));
    QCOMPARE(alone.image(2).size(), QSize(17, 17));
    savePicture(plain(34, 34, Qt::blue), folder.filePath("badge@2x.png"));
    const SkinPicture doubled(folder.filePath("badge.png"));
    QCOMPARE(doubled.image(1).size(), QSize(17, 17));
    QCOMPARE(doubled.image(2).size(), QSize(34, 34));
    QCOMPARE(doubled.size(), QSize(17, 17));

    const PaintDupNumberDelegate delegate;
    QCOMPARE(painted(delegate, m_model->index(0, 0), 2), badge(2, 2));
}

void TestPaintDupNumberDelegate::offersNoEditor()
{
    QWidget parent;
    PaintDupNumberDelegate delegate;
    const QModelIndex index = m_model->index(0, 0);
    QVERIFY(!delegate.createEditor(&parent, QStyleOptionViewItem(), index));
    delegate.setEditorData(&parent, index);
    delegate.setModelData(&parent, m_model.get(), index);
    QVERIFY(parent.children().isEmpty());

    QListView view;
    view.setModel(m_model.get());
    view.setItemDelegate(&delegate);
    view.edit(index);
    QVERIFY(view.viewport()->findChildren<QWidget*>().isEmpty());
}

QTEST_MAIN(TestPaintDupNumberDelegate)
#include "tst_paintdupnumberdelegate.moc"
