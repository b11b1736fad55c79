#include "common/messagedialog.h"

#include "common/style.h"
#include "ui_messagedialog.h"

MessageDialog::MessageDialog(QWidget* parent)
    : QImageDialog(parent), ui(std::make_unique<Ui::MessageDialog>())
{
    ui->setupUi(this);
    setWindowTitle(QStringLiteral("Melodrift"));
    setWindowIcon(SkinPicture::icon("logo.png"));
    setAttribute(Qt::WA_TranslucentBackground);
    SetImageBackgroud(SkinPicture::path("bg_message.png"));
    InitButton();
    InitConnect();
}

MessageDialog::~MessageDialog() = default;

void MessageDialog::InitButton()
{
    ui->m_btnCancel->setBtnImage(SkinPicture::path("button_continue.png"));
    ui->m_labContent->setFont(Style::font(13));
    QPalette palette = ui->m_labContent->palette();
    palette.setColor(QPalette::WindowText, Qt::black);
    ui->m_labContent->setPalette(palette);
}

void MessageDialog::InitConnect()
{
    connect(ui->m_btnCancel, SIGNAL(clicked()), this, SLOT(SlotOnBtnCancel()));
    connect(ui->m_btnType, SIGNAL(clicked()), this, SLOT(SlotOnBtnType()));
}

void MessageDialog::setMessageContect(const QString& text)
{
    ui->m_labContent->setText(text);
    setAccessibleDescription(text);
}

void MessageDialog::SetButtonTypeImage(const QString& actionImage, const QString& cancelImage)
{
    if (!actionImage.isEmpty())
        ui->m_btnType->setBtnImage(actionImage);
    if (!cancelImage.isEmpty())
        ui->m_btnCancel->setBtnImage(cancelImage);
}

void MessageDialog::SetCancelButtonHidden(bool hidden)
{
    ui->m_btnCancel->setHidden(hidden);
}

void MessageDialog::SlotOnBtnCancel()
{
    close();
}

void MessageDialog::SlotOnBtnType()
{
    close();
    setResult(1);
}

bool MessageDialog::notify(const QString& text, const char* actionImage, bool cancelHidden)
{
    MessageDialog message;
    message.setMessageContect(text);
    message.SetButtonTypeImage(SkinPicture::path(actionImage), QString());
    message.SetCancelButtonHidden(cancelHidden);
    return message.exec() == 1;
}
