#include "ownenvironment.h"

#ifdef Q_OS_UNIX
#include <cstring>
#include <pthread.h>
#include <unistd.h>
#include <vector>

#ifndef __GLIBC__
extern char** environ;
#endif

namespace {
struct Variable
{
    QByteArray lead;  ///< the name and "="
    QByteArray users; ///< the whole entry as the process found it; empty when it was unset
};

/// Kept to the end of the process.
std::vector<Variable>& variables()
{
    static auto* all = new std::vector<Variable>;
    return *all;
}

Variable* ownOf(const char* entry)
{
    for (Variable& own : variables())
        if (std::strncmp(entry, own.lead.constData(), size_t(own.lead.size())) == 0)
            return &own;
    return nullptr;
}

/// Runs in the copy of the process that becomes another program. Other threads may have been stopped there
/// with a lock in their hands, so nothing is called that could want one: the entries alone are exchanged.
void putUsersEntriesBack()
{
    char** to = environ;
    for (char** from = environ; *from; ++from) {
        const Variable* const own = ownOf(*from);
        if (!own)
            *to++ = *from;
        else if (!own->users.isEmpty())
            *to++ = const_cast<char*>(own->users.constData());
    }
    *to = nullptr;
}
} // namespace

void OwnEnvironment::set(const char* name, const QByteArray& value)
{
    if (variables().empty())
        pthread_atfork(nullptr, nullptr, putUsersEntriesBack);
    const QByteArray lead = QByteArray(name) + '=';
    variables().push_back({lead, qEnvironmentVariableIsSet(name) ? lead + qgetenv(name) : QByteArray()});
    qputenv(name, value);
}
#else
void OwnEnvironment::set(const char* name, const QByteArray& value)
{
    qputenv(name, value);
}
#endif
