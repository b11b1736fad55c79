#include "library/editresult.h"

using base::Failure;

iTunesEditProblem itunes::problemOf(Failure::Kind kind)
{
    switch (kind) {
    case Failure::Kind::FileReadOnly:
        return ITUNES_LIBRARY_READ_ONLY;
    case Failure::Kind::FolderReadOnly:
        return ITUNES_LIBRARY_FOLDER_READ_ONLY;
    case Failure::Kind::DiskReadOnly:
        return ITUNES_LIBRARY_DISK_READ_ONLY;
    case Failure::Kind::NoPermission:
        return ITUNES_LIBRARY_NO_PERMISSION;
    case Failure::Kind::DiskFull:
        return ITUNES_LIBRARY_DISK_FULL;
    case Failure::Kind::Gone:
        return ITUNES_LIBRARY_GONE;
    case Failure::Kind::InUse:
    case Failure::Kind::ChangedMeanwhile:
        return ITUNES_LIBRARY_IN_USE;
    case Failure::Kind::ChangedSince:
        return ITUNES_CHANGED_SINCE;
    case Failure::Kind::NotKept:
        return ITUNES_NOT_KEPT;
    case Failure::Kind::NotSafe:
        return ITUNES_LIBRARY_BROKEN;
    default:
        return ITUNES_LIBRARY_OTHER_PROBLEM;
    }
}

itunes::EditResult& itunes::lastResult()
{
    thread_local EditResult result;
    return result;
}
