#include "library/localtext.h"

#include "xml/xmltext.h"

#ifdef _WIN32
#include <windows.h>
#else
#include "base/text.h"

#include <cstdlib>
#endif

namespace {
#ifdef _WIN32
std::string fromLocal(const std::string& local)
{
    std::wstring wide(local.size(), L'\0');
    wide.resize(std::size_t(
        MultiByteToWideChar(CP_ACP, 0, local.data(), int(local.size()), wide.data(), int(wide.size()))));
    std::string utf8(wide.size() * 3, '\0');
    utf8.resize(std::size_t(WideCharToMultiByte(CP_UTF8, 0, wide.data(), int(wide.size()), utf8.data(),
                                                int(utf8.size()), nullptr, nullptr)));
    return utf8;
}
#else
/// UTF-8 passes whatever the locale says; empty when the text is neither UTF-8 nor in the locale's encoding.
std::string fromLocal(const std::string& local)
{
    if (base::toUtf32(local).find(0xFFFD) == std::u32string::npos)
        return local;
    std::wstring wide(local.size() + 1, L'\0');
    const std::size_t length = std::mbstowcs(wide.data(), local.c_str(), wide.size());
    if (length == std::size_t(-1))
        return std::string();
    return base::toUtf8(std::u32string(wide.begin(), wide.begin() + std::ptrdiff_t(length)))
        .value_or(std::string());
}
#endif
} // namespace

std::string itunes::cleanText(const char* utf8)
{
    return cleanText(std::string_view(utf8 ? utf8 : ""));
}

std::string itunes::cleanText(std::string_view utf8)
{
    std::string text;
    appendLiteral(utf8, text);
    return text;
}

std::string itunes::cleanLocalText(const char* local)
{
    const std::string text = local ? local : "";
    const std::string utf8 = fromLocal(text);
    return cleanText(utf8.empty() ? text.c_str() : utf8.c_str());
}

std::string itunes::localPath(const char* local)
{
#ifdef _WIN32
    return fromLocal(local ? local : "");
#else
    return local ? local : "";
#endif
}
