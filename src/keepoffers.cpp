#include "keepoffers.h"

#include "common/overlaybutton.h"
#include "common/textlink.h"

#include <QComboBox>
#include <QEvent>
#include <QGridLayout>

namespace {
constexpr int arrowRoom = 40; ///< what a box needs beside its text
constexpr int offerGap = 4;
} // namespace

KeepOffers::KeepOffers(QWidget& cover, QComboBox& genreBox, const QGridLayout& fields)
    : QObject(cover.parentWidget()), m_genreBox(genreBox), m_fields(fields), m_ownGenres(genreBox.count()),
      m_coverButton(new OverlayButton(cover.parentWidget())),
      m_genreLink(new TextLink(QString(), genreBox.parentWidget()))
{
    const QRect place = cover.geometry();
    m_coverButton->setObjectName(QStringLiteral("m_btnKeepCover"));
    const int height = m_coverButton->sizeHint().height();
    m_coverButton->setGeometry(place.x(), place.bottom() + 1 - height, place.width(), height);
    m_coverButton->setToolTip(QStringLiteral("Apply takes the cover out of the file unless it is kept"));
    m_coverButton->hide();
    connect(m_coverButton, &QAbstractButton::clicked, this, &KeepOffers::coverKept);

    m_genreLink->setObjectName(QStringLiteral("m_linkKeepGenre"));
    m_genreLink->setFont(m_genreBox.font());
    m_genreLink->hide();
    m_genreBox.installEventFilter(this);
    connect(m_genreLink, &QAbstractButton::clicked, this, &KeepOffers::keepGenre);
    connect(&m_genreBox, QOverload<int>::of(&QComboBox::currentIndexChanged), this, &KeepOffers::offerGenre);
    QWidget::setTabOrder(&m_genreBox, m_genreLink);
}

void KeepOffers::begin(const QString& genre)
{
    end();
    m_genre = genre;
    m_editing = true;
    const QString caption = QStringLiteral("Keep ") + genre.simplified();
    m_genreLink->setText(caption);
    m_genreLink->setAccessibleName(caption);
    m_genreLink->setToolTip(QStringLiteral("The song's genre is %1").arg(genre.simplified()));
    offerGenre();
}

void KeepOffers::end()
{
    m_editing = false;
    m_coverButton->hide();
    if (m_genreBox.count() > m_ownGenres) {
        m_genreBox.setCurrentIndex(m_formerIndex);
        m_genreBox.removeItem(m_ownGenres);
    }
    offerGenre();
}

void KeepOffers::offerCover(bool any, bool otherShown, bool kept)
{
    m_coverButton->setText(otherShown ? QStringLiteral("Keep the old cover")
                                      : QStringLiteral("Keep this cover"));
    m_coverButton->setAccessibleName(m_coverButton->text());
    m_coverButton->setChecked(kept);
    m_coverButton->setVisible(m_editing && any);
    m_coverButton->raise();
}

void KeepOffers::offerGenre()
{
    const bool offered = m_editing && !m_genre.isEmpty() && m_genreBox.currentText() != m_genre;
    m_genreLink->setVisible(offered);
    placeGenre();
}

/// What the box shows is never cut off for the link.
void KeepOffers::placeGenre()
{
    int row = 0;
    int column = 0;
    int rows = 0;
    int columns = 0;
    m_fields.getItemPosition(m_fields.indexOf(&m_genreBox), &row, &column, &rows, &columns);
    QRect cell = m_fields.cellRect(row, column);
    if (!cell.isValid())
        return; // before the first layout
    if (!m_genreLink->isHidden()) {
        const int needed = m_genreBox.fontMetrics().horizontalAdvance(m_genreBox.currentText()) + arrowRoom;
        const int width = qMin(m_genreLink->sizeHint().width(), cell.width() - needed - offerGap);
        m_genreLink->setGeometry(cell.right() + 1 - width, cell.y(), width, cell.height());
        cell.setRight(cell.right() - width - offerGap);
    }
    m_genreBox.setGeometry(cell);
}

/// The layout gives the box the whole cell.
bool KeepOffers::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::Resize || event->type() == QEvent::Move)
        placeGenre();
    return QObject::eventFilter(watched, event);
}

void KeepOffers::keepGenre()
{
    int index = m_genreBox.findText(m_genre, Qt::MatchExactly | Qt::MatchCaseSensitive);
    if (index < 0) {
        m_formerIndex = m_genreBox.currentIndex();
        index = m_genreBox.count();
        m_genreBox.addItem(m_genre);
    }
    m_genreBox.setFocus(); // or it would go wherever it finds a place, once the link is hidden
    m_genreBox.setCurrentIndex(index);
}
