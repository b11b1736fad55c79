#pragma once

#include "common/footline.h"
#include "songs/footlines.h"
#include "songs/localintake.h"

#include <QStringList>
#include <QVector>

class QWidget;

/// What the user is asked and told around the adding of local files. Every call returns once it is answered.
namespace IntakeDialogs {
/// After a drop that brought no music file: whether to choose files instead.
bool offerChoice();
/// After files were added: whether to scan them.
bool offerScan();
/// For a scan without files.
void askForFiles();
/// What the foot of the window says of an intake: nothing when all files were read and none was left out. Its
/// link shows which.
FootText result(const FootLines::Intake& intake, const QVector<LocalIntake::Unreadable>& unreadable,
                const QStringList& windowsMedia, QWidget* over);
} // namespace IntakeDialogs
