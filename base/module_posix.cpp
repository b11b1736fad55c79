#include "base/module.h"

#include <dlfcn.h>

namespace {
#ifdef __APPLE__
const char* const ending = ".dylib";
#else
const char* const ending = ".so";
#endif

/// With the slash; empty when the system does not tell.
std::string ownFolder()
{
    Dl_info own = {};
    if (::dladdr(reinterpret_cast<const void*>(&ownFolder), &own) == 0 || !own.dli_fname)
        return std::string();
    const std::string path = own.dli_fname;
    return path.substr(0, path.rfind('/') + 1);
}

std::string lastError()
{
    const char* const error = ::dlerror();
    return error ? error : "the system does not say why";
}
} // namespace

void* base::offeredBy(const std::string& module, const char* name, std::string& error)
{
    void* const loaded = ::dlopen((ownFolder() + "lib" + module + ending).c_str(), RTLD_NOW | RTLD_LOCAL);
    void* const offered = loaded ? ::dlsym(loaded, name) : nullptr;
    if (!offered)
        error = lastError();
    return offered;
}
