#include "collection/saveproblemtext.h"

QString SaveProblemText::of(SaveProblem problem)
{
    switch (problem) {
    case SAVE_FILE_READ_ONLY:
        return QStringLiteral("the file is read-only");
    case SAVE_FOLDER_READ_ONLY:
        return QStringLiteral("the folder is read-only");
    case SAVE_DISK_READ_ONLY:
        return QStringLiteral("the disk is read-only");
    case SAVE_NO_PERMISSION:
        return QStringLiteral("you have no permission to write it");
    case SAVE_DISK_FULL:
        return QStringLiteral("the disk is full");
    case SAVE_CHANGED_MEANWHILE:
        return QStringLiteral("another program changed it meanwhile");
    case SAVE_FILE_GONE:
        return QStringLiteral("the file is gone");
    case SAVE_NOT_SAFE:
        return QStringLiteral("the file cannot be written safely");
    case SAVE_PICTURE_TOO_LARGE:
        return QStringLiteral("the new cover is too large for the file");
    default:
        return QStringLiteral("the log tells why");
    }
}
