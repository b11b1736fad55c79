#include "introducethissofedialog.h"

#include "common/style.h"
#include "homepage.h"
#include "ui_introducethissofedialog.h"

IntroduceThisSofeDialog::IntroduceThisSofeDialog(QWidget* parent)
    : QImageDialog(parent), ui(std::make_unique<Ui::IntroduceThisSofeDialog>())
{
    ui->setupUi(this);
    setWindowTitle(QStringLiteral("Melodrift"));
    setWindowIcon(SkinPicture::icon("logo.png"));
    setAttribute(Qt::WA_TranslucentBackground);
    SetImageBackgroud(SkinPicture::path("about_this_soft.png"));
    // Oddity 14: the picture is named without its extension.
    ui->m_btnOk->setBtnImage(SkinPicture::path("button_ok"));
    InitText();
    connect(ui->m_btnOk, SIGNAL(clicked()), this, SLOT(SlotOnBtnOk()));
}

IntroduceThisSofeDialog::~IntroduceThisSofeDialog() = default;

void IntroduceThisSofeDialog::InitText()
{
    auto* link = new QLabel(this);
    link->setObjectName(QStringLiteral("m_labLink"));
    link->setFont(Style::font(13));
    link->setText(QStringLiteral("<a href=\"%1\" style=\"color:%2\">%1</a>")
                      .arg(homePage().toHtmlEscaped(), Style::chosen.name()));
    link->setTextInteractionFlags(Qt::LinksAccessibleByMouse | Qt::LinksAccessibleByKeyboard);
    link->setOpenExternalLinks(true);
    link->setGeometry(ui->m_labhttp->geometry());
}

void IntroduceThisSofeDialog::SlotOnBtnOk()
{
    close();
}
