#include "findstrip.h"

#include "collection/counttext.h"
#include "common/findfield.h"
#include "common/style.h"
#include "songviews.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QShortcut>

namespace {
constexpr int edge = 6;        // to the view's left edge
constexpr int countGap = 8;    // between field and count
constexpr int buttonsGap = 16; // to the display buttons
} // namespace

FindStrip::FindStrip(QWidget* parent)
    : QWidget(parent), m_field(new FindField(this)), m_count(new QLabel(this))
{
    m_field->setObjectName(QStringLiteral("m_findField"));
    m_field->setPlaceholderText(QStringLiteral("Find songs"));
    m_field->setAccessibleName(QStringLiteral("Find songs"));
    m_field->setToolTip(QStringLiteral("Title, artist, album, genre or file name (%1)")
                            .arg(QKeySequence(QKeySequence::Find).toString(QKeySequence::NativeText)));
    m_count->setObjectName(QStringLiteral("m_labFound"));
    m_count->setFont(Style::font(12));
    QPalette palette = m_count->palette();
    palette.setColor(QPalette::WindowText, Style::muted);
    m_count->setPalette(palette);
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(edge, 0, buttonsGap, 0);
    row->setSpacing(countGap);
    row->addWidget(m_field, 1);
    row->addWidget(m_count);
    row->addStretch();
    connect(new QShortcut(QKeySequence::Find, this), &QShortcut::activated, m_field, &FindField::begin);
}

void FindStrip::setViews(SongViews& views, QWidget& focus)
{
    connect(m_field, &QLineEdit::textChanged, &views, &SongViews::find);
    connect(m_field, &FindField::begun, &views, &SongViews::prepareFind);
    connect(m_field, &FindField::left, &focus, [&focus] { focus.setFocus(Qt::OtherFocusReason); });
    connect(&views, &SongViews::listShown, this, &FindStrip::tell);
}

void FindStrip::clear()
{
    m_field->clear();
}

void FindStrip::tell(int found, int all)
{
    const bool looks = !m_field->text().trimmed().isEmpty();
    const QString count =
        QStringLiteral("%1 of %2").arg(CountText::number(quint64(found)), CountText::number(quint64(all)));
    m_count->setText(looks ? count : QString());
    m_field->setAccessibleDescription(m_count->text());
}
