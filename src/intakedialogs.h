#pragma once

#include <QStringList>

class QWidget;

/// What the user is asked and told around the adding of local files. Every call returns once it is answered.
namespace IntakeDialogs {
/// The files that the user chooses; none where there was no choice.
QStringList chooseFiles(QWidget* parent);
/// After a drop that brought no music file: whether to choose files instead.
bool offerChoice();
/// After files were added: whether to scan them.
bool offerScan();
/// For a scan without files.
void askForFiles();
} // namespace IntakeDialogs
