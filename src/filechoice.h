#pragma once

#include <QString>
#include <QStringList>

class QWidget;
struct LibrarySight;

/// The dialogs in which the user chooses files. Each returns once that is done, with nothing where there was
/// no choice, and opens without a name in its field.
namespace FileChoice {
/// Music to add.
QStringList music(QWidget* parent);
/// A cover.
QString picture(QWidget* parent);
/// A music library, in the place of this one.
QString library(QWidget* parent, const LibrarySight& former);
} // namespace FileChoice
