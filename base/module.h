#pragma once

#include <atomic>
#include <string>

namespace base {
/// Something that a module offers by its name; loads the module, which lies beside this library, and keeps it
/// to the end of the process. Null with the reason. Any thread.
void* offeredBy(const std::string& module, const char* name, std::string& error);

/// One that is loaded when somebody asks for it first. Any thread.
class Module
{
public:
    /// The texts are kept by their addresses; the purpose is for the log.
    constexpr Module(const char* file, const char* offer, const char* purpose)
        : m_file(file), m_offer(offer), m_purpose(purpose)
    {
    }

    /// What it offers; null, with a line in the log, as long as it cannot be loaded.
    const void* opened();
    /// Null when it was never opened.
    const void* openedBefore() const { return m_offered; }

private:
    const char* m_file;
    const char* m_offer;
    const char* m_purpose;
    std::atomic<const void*> m_offered{nullptr};
};
} // namespace base
