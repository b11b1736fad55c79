#include "base/failure.h"

#include <cerrno>
#include <cstring>

using base::Failure;

Failure::Kind base::kindOf(int errorNumber)
{
    switch (errorNumber) {
    case EROFS:
        return Failure::Kind::DiskReadOnly;
    case EACCES:
    case EPERM:
        return Failure::Kind::NoPermission;
    case ENOSPC:
#ifdef EDQUOT
    case EDQUOT:
#endif
        return Failure::Kind::DiskFull;
    case ENOENT:
    case ENOTDIR:
        return Failure::Kind::Gone;
    default:
        return Failure::Kind::Other;
    }
}

Failure base::systemFailure(const std::string& what)
{
    const int number = errno;
    return {what + std::strerror(number), kindOf(number)};
}
