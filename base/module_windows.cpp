#include "base/module.h"

#include <windows.h>

namespace {
/// With the backslash.
std::wstring ownFolder()
{
    HMODULE own = nullptr;
    GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                       reinterpret_cast<LPCWSTR>(&ownFolder), &own);
    std::wstring path(32768, L'\0');
    path.resize(GetModuleFileNameW(own, path.data(), DWORD(path.size())));
    return path.substr(0, path.rfind(L'\\') + 1);
}
} // namespace

void* base::offeredBy(const std::string& module, const char* name, std::string& error)
{
    const std::wstring path = ownFolder() + std::wstring(module.begin(), module.end()) + L".dll"; // ASCII
    HMODULE loaded = LoadLibraryW(path.c_str());
    void* const offered = loaded ? reinterpret_cast<void*>(GetProcAddress(loaded, name)) : nullptr;
    if (!offered)
        error = "error " + std::to_string(GetLastError());
    return offered;
}
