#include "ownenvironment.h"

#ifdef Q_OS_UNIX
#include <cstring>
#include <pthread.h>
#include <unistd.h>

#ifndef __GLIBC__
extern char** environ;
#endif

namespace {
const char variable[] = "TMPDIR=";
constexpr size_t variableLength = sizeof variable - 1;

/// As the process found it, with the name in front; null when it was unset.
char* usersEntry = nullptr;

/// Runs in the copy of the process that becomes another program. Other threads may have been stopped there
/// with a lock in their hands, so nothing is called that could want one: the entry alone is exchanged.
void putUsersEntryBack()
{
    char** to = environ;
    for (char** from = environ; *from; ++from) {
        char* entry = std::strncmp(*from, variable, variableLength) == 0 ? usersEntry : *from;
        if (entry)
            *to++ = entry;
    }
    *to = nullptr;
}
} // namespace

void OwnEnvironment::setTemporaryFolder(const QByteArray& path)
{
    if (qEnvironmentVariableIsSet("TMPDIR")) {
        static QByteArray entry = variable + qgetenv("TMPDIR");
        usersEntry = entry.data();
    }
    qputenv("TMPDIR", path);
    pthread_atfork(nullptr, nullptr, putUsersEntryBack);
}
#else
void OwnEnvironment::setTemporaryFolder(const QByteArray& path)
{
    qputenv("TMP", path);
    qputenv("TEMP", path);
}
#endif
