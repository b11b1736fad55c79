#pragma once

#include <memory>
#include <mutex>
#include <new>
#include <unordered_map>

namespace base {
/// Holds what stands behind the handles of one kind. A handle is an object without data of its own: its
/// memory may be given back at any time without a word, or never. What stood behind a handle that is gone
/// stays until a new one takes its address. Never destroyed, so that calls stay defined to the end of the
/// process.
template <typename State>
class Registry
{
public:
    static Registry& instance()
    {
        static auto* registry = new Registry;
        return *registry;
    }

    /// A new handle of the class, or null when memory is short.
    template <typename Handle>
    Handle* make()
    {
        static_assert(sizeof(Handle) == sizeof(void*), "a handle carries no data");
        void* memory = ::operator new(sizeof(Handle), std::nothrow);
        if (!memory)
            return nullptr;
        auto* handle = new (memory) Handle;
        try {
            auto state = std::make_shared<State>();
            const std::lock_guard<std::mutex> lock(m_mutex);
            m_states[handle] = std::move(state);
        } catch (const std::bad_alloc&) {
            ::operator delete(memory);
            return nullptr;
        }
        return handle;
    }

    std::shared_ptr<State> of(const void* handle)
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return m_states.at(handle);
    }

    /// Frees what stands behind a handle, which must not be used again; false when there is nothing.
    bool forget(const void* handle)
    {
        std::shared_ptr<State> state; // its end may take a while: outside the lock
        const std::lock_guard<std::mutex> lock(m_mutex);
        const auto found = m_states.find(handle);
        if (found == m_states.end())
            return false;
        state = std::move(found->second);
        m_states.erase(found);
        return true;
    }

private:
    std::mutex m_mutex;
    std::unordered_map<const void*, std::shared_ptr<State>> m_states;
};
} // namespace base
