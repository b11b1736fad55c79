#include "navigationwidget.h"

#include "common/style.h"
#include "ui_navigationwidget.h"

#include <QPainter>

#include <array>

NavigationWidget::NavigationWidget(QWidget* parent)
    : QImageWidget(parent), ui(std::make_unique<Ui::NavigationWidget>())
{
    ui->setupUi(this);
    InitBtn();
    InitConnect();
}

NavigationWidget::~NavigationWidget() = default;

void NavigationWidget::InitBtn()
{
    for (QImageButton* button : {ui->m_btnMusicAll, ui->m_btnMusicUndefined, ui->m_btnMusicDuplicate}) {
        button->setBtnImage(SkinPicture::path("button_menu.png"));
        button->setMouseTracking(true);
    }
    ui->m_btnMusicAll->setMark(NavigationButton::MarkNote);
    ui->m_btnMusicUndefined->setMark(NavigationButton::MarkQuestion);
    ui->m_btnMusicDuplicate->setMark(NavigationButton::MarkCopies);
    stackButtons();
    setMusicCount(0, 0, 0);
}

void NavigationWidget::InitConnect()
{
    connect(ui->m_btnMusicAll, SIGNAL(clicked()), this, SLOT(OnBtnMusicAll()));
    connect(ui->m_btnMusicDuplicate, SIGNAL(clicked()), this, SLOT(OnBtnMusicDuplicate()));
    connect(ui->m_btnMusicUndefined, SIGNAL(clicked()), this, SLOT(OnBtnMusicUndefined()));
}

void NavigationWidget::select(QWidget* chosen)
{
    for (NavigationButton* button : {ui->m_btnMusicAll, ui->m_btnMusicUndefined, ui->m_btnMusicDuplicate}) {
        button->setEnabled(button != chosen);
        button->setChosen(button == chosen);
    }
}

void NavigationWidget::OnBtnMusicAll()
{
    select(ui->m_btnMusicAll);
    emit emitMusicAll();
    emit emitHiddenMusicDetailedWidget();
}

void NavigationWidget::OnBtnMusicUndefined()
{
    select(ui->m_btnMusicUndefined);
    emit emitMusicUndefined();
    emit emitHiddenMusicDetailedWidget();
}

void NavigationWidget::OnBtnMusicDuplicate()
{
    select(ui->m_btnMusicDuplicate);
    emit emitMusicDuplicate();
    emit emitHiddenMusicDetailedWidget();
}

void NavigationWidget::choose(int row)
{
    const std::array<QAbstractButton*, 3> buttons = {ui->m_btnMusicAll, ui->m_btnMusicUndefined,
                                                     ui->m_btnMusicDuplicate};
    if (row >= 0 && row < int(buttons.size()))
        buttons[size_t(row)]->click();
}

void NavigationWidget::SlotSetBtnState()
{
    select(ui->m_btnMusicAll);
}

void NavigationWidget::OnLeftWidgetBtnState()
{
    select(ui->m_btnMusicAll);
}

void NavigationWidget::SlotForbidClickingBtn(bool forbid)
{
    // Oddity 34: lifting the ban enables the chosen one, too, which goes on looking chosen.
    for (QWidget* button : {ui->m_btnMusicAll, ui->m_btnMusicUndefined, ui->m_btnMusicDuplicate})
        button->setEnabled(!forbid);
}

void NavigationWidget::setAllSongsCount(int count)
{
    ui->m_btnMusicAll->setBtnText(QStringLiteral("All songs(%1)").arg(count));
}

void NavigationWidget::setUndefindSongsCount(int count)
{
    ui->m_btnMusicUndefined->setBtnText(QStringLiteral("Undefined songs(%1)").arg(count));
}

void NavigationWidget::setDuplicateSongsCount(int count)
{
    ui->m_btnMusicDuplicate->setBtnText(QStringLiteral("Duplicate songs(%1)").arg(count));
}

void NavigationWidget::setMusicCount(int all, int undefined, int duplicate)
{
    setAllSongsCount(all);
    setUndefindSongsCount(undefined);
    setDuplicateSongsCount(duplicate);
}

void NavigationWidget::setBtnHidden(bool hidden)
{
    ui->m_btnMusicDuplicate->setHidden(hidden);
    ui->m_btnMusicUndefined->setHidden(hidden);
}

/// At a painting they stand there already, and this does nothing.
void NavigationWidget::stackButtons()
{
    int top = 0;
    for (QWidget* button : {ui->m_btnMusicAll, ui->m_btnMusicUndefined, ui->m_btnMusicDuplicate}) {
        button->move(0, top);
        top += button->height();
    }
}

void NavigationWidget::paintEvent(QPaintEvent*)
{
    stackButtons();
    QPainter painter(this);
    painter.fillRect(rect(), Style::pane);
    painter.fillRect(width() - 1, 0, 1, height(), Style::divider);
}
