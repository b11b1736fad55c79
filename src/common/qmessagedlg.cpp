#include "common/qmessagedlg.h"

#include "common/qimagebutton.h"
#include "common/style.h"

#include <QGuiApplication>
#include <QMessageBox>
#include <QMouseEvent>
#include <QPainter>
#include <QScreen>
#include <QStyle>
#include <QTextDocument>
#include <QTextEdit>
#include <QtMath>

namespace {
constexpr int stripHeight = 32; ///< also when its picture is missing
constexpr int iconSide = 20;
constexpr int titleMargin = 10;
constexpr int margin = 24;
constexpr int spaceAboveButtons = 22;
constexpr int spaceBelowButtons = 16;
constexpr int leastWidth = 320;
constexpr int greatestTextWidth = 600;
constexpr int spaceAround = 80;           ///< that the largest box leaves of the screen
constexpr int longestMessage = 32 * 1024; ///< characters; more would take seconds to lay out

/// Oddity 15: paths with backslashes, behind an empty application path.
std::unique_ptr<SkinPicture> picture(const char* path)
{
    return std::make_unique<SkinPicture>(
        QStringLiteral("%1%2").arg(QMessageDlg::GetAppPath(), QLatin1String(path)));
}

/// Without its picture the button shows its words, and has room for them.
bool loadOrName(QImageButton* button, const char* path)
{
    button->setBtnText(QString());
    if (button->setBtnImage(QStringLiteral("%1%2").arg(QMessageDlg::GetAppPath(), QLatin1String(path))))
        return true;
    button->setBtnText(button->accessibleName());
    button->setFixedSize(130, 40);
    return false;
}

/// Oddity 49: the line with the most characters, which is not always the widest one.
QString longestLine(const QString& text)
{
    QString longest;
    for (const QString& line : text.split(QLatin1Char('\n')))
        if (line.size() > longest.size())
            longest = line;
    return longest;
}
} // namespace

QMessageDlg::QMessageDlg(QWidget* parent)
    : QDialog(parent, Qt::Dialog | Qt::FramelessWindowHint), m_btnOk(new QImageButton(this)),
      m_btnCancel(new QImageButton(this)), m_btnClose(new QImageButton(this)),
      m_textMessage(new QTextEdit(this))
{
    setFont(Style::font(12));
    LoadBorderImg();
    m_pTitleIcon = picture("\\pic\\msg_title_icon.png");
    InitMessage();
    InitButton();
    InitConnects();
    SetTitle(QStringLiteral("Zarnovik Fetcher")); // Oddity 15: until it gets another.
}

QMessageDlg::~QMessageDlg() = default;

void QMessageDlg::LoadBorderImg()
{
    m_pTop = picture("\\pic\\message_top.png");
    m_pBottom = picture("\\pic\\message_bottom.png");
    m_pLeft = picture("\\pic\\message_line_left.png");
    m_pRight = picture("\\pic\\message_line_right.png");
    for (const auto& part : {m_pTop.get(), m_pBottom.get(), m_pLeft.get(), m_pRight.get()}) {
        if (!part->size().isEmpty())
            continue;
        qDebug("QMessageDlg::LoadBorderImg fail");
        return;
    }
}

void QMessageDlg::InitMessage()
{
    m_textMessage->setObjectName(QStringLiteral("m_textMessage"));
    m_textMessage->setReadOnly(true);
    m_textMessage->setFrameShape(QFrame::NoFrame);
    m_textMessage->viewport()->setAutoFillBackground(false);
    m_textMessage->document()->setDocumentMargin(0);
    QPalette colours = m_textMessage->palette();
    colours.setColor(QPalette::Text, Style::ink);
    m_textMessage->setPalette(colours);
}

void QMessageDlg::InitButton()
{
    m_btnOk->setObjectName(QStringLiteral("m_btnOk"));
    m_btnCancel->setObjectName(QStringLiteral("m_btnCancel"));
    m_btnClose->setObjectName(QStringLiteral("m_btnClose"));
    m_btnOk->setDefault(true);
    m_btnClose->setAutoDefault(false);
    m_btnClose->setFixedSize(iconSide, iconSide);
    if (!m_btnClose->setBtnImage(
            QStringLiteral("%1%2").arg(GetAppPath(), QStringLiteral("\\pic\\button_close.png"))))
        qDebug("QMessageDlg::InitButton fail");
    SetMessageStyle(0);
    setTabOrder(m_btnOk, m_btnCancel);
    setTabOrder(m_btnCancel, m_textMessage);
    setTabOrder(m_textMessage, m_btnClose);
    m_btnOk->setFocus();
}

void QMessageDlg::InitConnects()
{
    connect(m_btnOk, SIGNAL(clicked()), this, SLOT(OnBtnOk()));
    connect(m_btnCancel, SIGNAL(clicked()), this, SLOT(OnBtnCancel()));
    connect(m_btnClose, SIGNAL(clicked()), this, SLOT(OnBtnCancel()));
}

void QMessageDlg::SetTitle(const QString& title)
{
    m_strTitle = title;
    setWindowTitle(title);
    placeParts();
    update();
}

void QMessageDlg::SetMessage(const QString& message)
{
    m_strMessage = message.left(longestMessage);
    m_strMessage.replace(QLatin1String("\r\n"), QLatin1String("\n"));
    if (message.size() > longestMessage)
        m_strMessage.append(QLatin1String("..."));
    m_textMessage->setPlainText(m_strMessage);
    setAccessibleDescription(m_strMessage);
    placeParts();
}

void QMessageDlg::SetMessageStyle(unsigned int flags)
{
    if (flags & StyleRestart) {
        if (!loadAnswers("\\pic\\button_Restart.png", "\\pic\\button_Restart_later.png"))
            qDebug("QMessageDlg::InitButton Load Restart Image fail");
    } else if (flags & StyleYesNo) {
        if (!loadAnswers("\\pic\\button_yes.png", "\\pic\\button_no.png"))
            qDebug("QMessageDlg::InitButton Load Yes Image fail");
    } else if (!loadAnswers("\\pic\\button_ok.png", "\\pic\\button_cancel.png")) {
        qDebug("QMessageDlg::InitButton Load Cancel Image fail");
    }
    placeParts();
}

bool QMessageDlg::loadAnswers(const char* first, const char* second)
{
    const bool firstLoaded = loadOrName(m_btnOk, first);
    return loadOrName(m_btnCancel, second) && firstLoaded;
}

void QMessageDlg::OnBtnOk()
{
    accept();
}

void QMessageDlg::OnBtnCancel()
{
    reject();
}

QSize QMessageDlg::messageSize() const
{
    const QSize screen =
        (window()->screen() ? window()->screen() : QGuiApplication::primaryScreen())->availableSize();
    const int around = stripHeight + margin + spaceAboveButtons + m_btnOk->height() + spaceBelowButtons;
    const int widest = qMin(greatestTextWidth, screen.width() - spaceAround - 2 * margin);
    const int highest = qMax(fontMetrics().lineSpacing(), screen.height() - spaceAround - around);
    // Rounding must not wrap the line that the width was taken from.
    const int width = qBound(leastWidth - 2 * margin,
                             fontMetrics().horizontalAdvance(longestLine(m_strMessage)) + 2, widest);
    QTextDocument layout;
    layout.setDocumentMargin(0);
    layout.setDefaultFont(font());
    layout.setPlainText(m_strMessage);
    layout.setTextWidth(width);
    const int height = qCeil(layout.size().height());
    if (height <= highest)
        return {width, height};
    return {width + m_textMessage->style()->pixelMetric(QStyle::PM_ScrollBarExtent), highest};
}

void QMessageDlg::placeParts()
{
    const QSize message = messageSize();
    const int titleWidth = fontMetrics().horizontalAdvance(m_strTitle) + 4 * titleMargin + 2 * iconSide;
    const int width = qMax(message.width() + 2 * margin, qMin(titleWidth, greatestTextWidth));
    const int buttonsTop = stripHeight + margin + message.height() + spaceAboveButtons;
    setFixedSize(width, buttonsTop + m_btnOk->height() + spaceBelowButtons);
    m_textMessage->setGeometry(QRect(QPoint(margin, stripHeight + margin), message));
    m_btnCancel->move(width - margin - m_btnCancel->width(), buttonsTop);
    m_btnOk->move(m_btnCancel->x() - titleMargin - m_btnOk->width(), buttonsTop);
    m_btnClose->move(width - titleMargin - m_btnClose->width(), (stripHeight - m_btnClose->height()) / 2);
}

QRect QMessageDlg::titleRect() const
{
    const int left = titleMargin + iconSide + titleMargin;
    return {left, 0, m_btnClose->x() - titleMargin - left, stripHeight};
}

void QMessageDlg::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.fillRect(rect(), Style::paper);
    const auto draw = [&painter](const SkinPicture& part, const QRect& place) {
        if (!part.size().isEmpty())
            painter.drawImage(place, part.image(painter));
    };
    draw(*m_pTop, QRect(0, 0, width(), m_pTop->size().height()));
    draw(*m_pLeft, QRect(0, 0, m_pLeft->size().width(), height()));
    draw(*m_pRight, QRect(width() - m_pRight->size().width(), 0, m_pRight->size().width(), height()));
    const int bottom = m_pBottom->size().height();
    draw(*m_pBottom, QRect(0, height() - bottom, width(), bottom));
    const int iconTop = (stripHeight - iconSide) / 2;
    draw(*m_pTitleIcon, QRect(QPoint(titleMargin, iconTop), m_pTitleIcon->size()));
    paintTitle(painter);
}

void QMessageDlg::paintTitle(QPainter& painter) const
{
    const QRect place = titleRect();
    painter.setPen(Style::ink);
    painter.drawText(place, Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine,
                     fontMetrics().elidedText(m_strTitle, Qt::ElideRight, place.width()));
}

void QMessageDlg::mousePressEvent(QMouseEvent* event)
{
    m_ptPress = event->globalPos() - pos();
    QDialog::mousePressEvent(event);
}

void QMessageDlg::mouseMoveEvent(QMouseEvent* event)
{
    const QSize strip = m_pTop->size();
    if (!strip.isEmpty() && m_ptPress.y() < strip.height())
        move(event->globalPos() - m_ptPress);
    QDialog::mouseMoveEvent(event);
}

void QMessageDlg::changeEvent(QEvent* event)
{
    QDialog::changeEvent(event);
    if (event->type() == QEvent::FontChange && m_pTitleIcon)
        placeParts();
}

void ShowMessage(const char* text, const char* title, unsigned int)
{
    QMessageBox box(QMessageBox::Information, QString::fromUtf8(title), QString::fromUtf8(text),
                    QMessageBox::Ok);
    box.setTextFormat(Qt::PlainText);
    box.exec();
}
