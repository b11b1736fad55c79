#include "intakedialogs.h"

#include "common/messagedialog.h"
#include "pathlistwindow.h"

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

FootText IntakeDialogs::result(const FootLines::Intake& intake,
                               const QVector<LocalIntake::Unreadable>& unreadable,
                               const QStringList& windowsMedia, QWidget* over)
{
    const QString line = FootLines::takenIn(intake);
    if (unreadable.isEmpty() && windowsMedia.isEmpty())
        return {line, false, {}};
    QStringList paths;
    for (const LocalIntake::Unreadable& file : unreadable)
        paths.append(file.path + QLatin1String(": ") + file.reason);
    for (const QString& path : windowsMedia)
        paths.append(path + QLatin1String(": a WMA file, which is added with Ctrl+O"));
    const auto show = [over, paths] { PathListWindow::open(*over, paths); };
    return {line, !unreadable.isEmpty(), {{QStringLiteral("Show"), show}}};
}
