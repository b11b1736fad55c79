#include "intakedialogs.h"

#include "collection/formats.h"
#include "common/messagedialog.h"

#include <QFileDialog>

QStringList IntakeDialogs::chooseFiles(QWidget* parent)
{
    return QFileDialog::getOpenFileNames(parent, QStringLiteral("open"), QString(),
                                         QStringLiteral("music files(%1)").arg(Formats::namePatterns()));
}

bool IntakeDialogs::offerChoice()
{
    return MessageDialog::notify(QStringLiteral("Add file(s) failed! Please add music files again."),
                                 "button_addmusic.png", false);
}

bool IntakeDialogs::offerScan()
{
    return MessageDialog::notify(
        QStringLiteral("Add file(s) successfully! \nClick Start Scan to clean up right away!"),
        "btn_msg_startscan.png");
}

void IntakeDialogs::askForFiles()
{
    // Oddity 12: these blanks, here and in other messages.
    MessageDialog::notify(QStringLiteral("Sorry,Please add file from local."), "button_ok.png");
}
