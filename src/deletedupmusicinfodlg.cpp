#include "deletedupmusicinfodlg.h"

#include "common/style.h"
#include "songs/clearingwords.h"
#include "ui_deletedupmusicinfodlg.h"

#include <QIcon>

namespace {
void write(RetractLabel* label, const QString& text, const QColor& colour)
{
    QPalette palette = label->palette();
    palette.setColor(QPalette::WindowText, colour);
    label->setPalette(palette);
    label->setText(text);
}
} // namespace

DeleteDupMusicInfoDlg::DeleteDupMusicInfoDlg(QWidget* parent)
    : QImageDialog(parent), ui(std::make_unique<Ui::DeleteDupMusicInfoDlg>())
{
    ui->setupUi(this);
    setWindowTitle(QStringLiteral("Melodryft")); // Oddity 1: spelt so.
    setWindowIcon(SkinPicture::icon("logo.png"));
    setAttribute(Qt::WA_TranslucentBackground);
    SetImageBackgroud(SkinPicture::path("bg_message_duplicated.png"));
    ui->m_btnCancel->setBtnImage(SkinPicture::path("button_cancel.png"));
    ui->m_btnOK->setBtnImage(SkinPicture::path("button_ok.png"));
    ui->m_btnOK->setChangesFiles(true);
    ui->m_checkBox->move(94, 60);
    ui->m_checkBox->setStyleSheet(QStringLiteral("QCheckBox::indicator{width:16px;height:16px}"));
    ui->m_checkBox->setAccessibleName(QStringLiteral("Do not ask me again"));
    connect(ui->m_btnOK, SIGNAL(clicked()), this, SLOT(slotOnBtnOK()));
    connect(ui->m_btnCancel, SIGNAL(clicked()), this, SLOT(slotOnBtnCancel()));
}

DeleteDupMusicInfoDlg::~DeleteDupMusicInfoDlg() = default;

void DeleteDupMusicInfoDlg::setSongs(const QList<QMusicInfo*>& going, const QList<QMusicInfo*>& kept)
{
    const RetractLabel* const line = ui->m_labQuestion;
    const auto fits = [line](const QString& text) {
        return line->fontMetrics().horizontalAdvance(text) <= line->width();
    };
    const ClearingWords::Question question = ClearingWords::beforeGroup(going, kept, fits);
    write(ui->m_labQuestion, question.text, question.nothingStays ? Style::dangerText : Style::ink);
    write(ui->m_labFiles, question.files, Style::muted);
    setAccessibleDescription(question.text + QLatin1Char(' ') + question.files);
}

bool DeleteDupMusicInfoDlg::isNotToAskAgain() const
{
    return ui->m_checkBox->isChecked();
}

void DeleteDupMusicInfoDlg::slotOnBtnOK()
{
    const bool notToAskAgain = isNotToAskAgain();
    close();
    ui->m_checkBox->setChecked(notToAskAgain);
    setResult(QDialog::Accepted);
}

void DeleteDupMusicInfoDlg::reject()
{
    // Whoever takes the deletion back is asked again.
    ui->m_checkBox->setChecked(false);
    QImageDialog::reject();
}

void DeleteDupMusicInfoDlg::slotOnBtnCancel()
{
    close();
}
