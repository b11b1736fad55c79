#include "filechoice.h"

#include "collection/formats.h"
#include "songs/librarysight.h"

#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QStandardPaths>

namespace {
/// The folder, if it is there: of one that is not, a dialog would make a name for a file.
QString existingFolder(const QString& folder)
{
    return QFileInfo(folder).isDir() ? folder : QDir::homePath();
}
} // namespace

QStringList FileChoice::music(QWidget* parent)
{
    return QFileDialog::getOpenFileNames(parent, QStringLiteral("open"), QString(),
                                         QStringLiteral("music files(%1)").arg(Formats::namePatterns()));
}

QString FileChoice::picture(QWidget* parent)
{
    return QFileDialog::getOpenFileName(
        parent, QStringLiteral("Open File"),
        existingFolder(QStandardPaths::writableLocation(QStandardPaths::PicturesLocation)),
        QStringLiteral("Images(*.png *.xpm *.jpg)"));
}

QString FileChoice::library(QWidget* parent, const LibrarySight& former)
{
    // Nothing of a disk that may not answer is asked before it was seen.
    const QString folder =
        former.isThere ? QFileInfo(former.file).path() : former.folders.value(former.folders.size() - 1);
    return QFileDialog::getOpenFileName(parent, QStringLiteral("Choose library file"), existingFolder(folder),
                                        QStringLiteral("Music libraries (*.xml)"));
}
