#include "base/module.h"

#include "base/log.h"

/// Two threads may load at once: the system does it for one, and has the other wait.
const void* base::Module::opened()
{
    if (!m_offered) {
        std::string error;
        m_offered = offeredBy(m_file, m_offer, error);
        if (!m_offered)
            logLine(m_purpose, "is not possible, its module cannot be loaded: " + error);
    }
    return m_offered;
}
