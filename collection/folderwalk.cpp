#include "collection/folderwalk.h"

#include "base/failure.h"
#include "base/platform.h"
#include "collection/formats.h"

#include <algorithm>
#include <filesystem>
#include <utility>

namespace fs = std::filesystem;

namespace {
fs::path systemPath(const std::string& path)
{
#ifdef _WIN32
    return fs::u8path(path);
#else
    return path;
#endif
}

std::string nameOf(const fs::directory_entry& entry)
{
#ifdef _WIN32
    return entry.path().filename().u8string();
#else
    return entry.path().filename().native();
#endif
}

/// Whether a name comes first as texts of 16-bit units are sorted, which is how lists of names are: among
/// those, characters beyond U+FFFF come before those from U+E000 on.
bool comesFirst(const std::string& a, const std::string& b)
{
    const auto [inA, inB] = std::mismatch(a.begin(), a.end(), b.begin(), b.end());
    if (inA == a.end() || inB == b.end())
        return inA == a.end() && inB != b.end();
    const auto rank = [](char c) {
        const int byte = static_cast<unsigned char>(c);
        return byte == 0xEE || byte == 0xEF ? byte + 0x100 : byte;
    };
    return rank(*inA) < rank(*inB);
}

std::string joined(const std::string& folder, const std::string& name)
{
    return folder.back() == '/' ? folder + name : folder + '/' + name;
}
} // namespace

FolderWalk::FolderWalk(Rules rules, Visitor& visitor) : m_rules(std::move(rules)), m_visitor(visitor) {}

bool FolderWalk::isFolder(const std::string& path)
{
    std::error_code none;
    return fs::is_directory(systemPath(path), none);
}

bool FolderWalk::isMusicName(const std::string& path)
{
    const std::string end = path.substr(path.size() - std::min<std::size_t>(path.size(), 3));
    const QString lastThree = QString::fromLatin1(end.data(), int(end.size()));
    return Formats::isMusicEnding(lastThree) || Formats::isWindowsMediaEnding(lastThree);
}

void FolderWalk::walk(const std::string& folder)
{
    std::string start = folder;
    while (start.size() > 1 && start.back() == '/')
        start.pop_back();
    base::FileState state;
    if (base::stateOf(start, state))
        m_device = state.device;
    m_below = joined(start, std::string()).size();
    enqueue(start, base::realPath(start));
    while (!m_waiting.empty()) {
        const Folder next = m_waiting.front();
        m_waiting.pop_front();
        if (!visit(next))
            m_waiting.clear();
    }
}

void FolderWalk::enqueue(const std::string& path, const std::string& real)
{
    const auto [place, isNew] = m_walked.insert(real);
    if (isNew)
        m_waiting.push_back({path, &*place});
}

bool FolderWalk::visit(const Folder& folder)
{
    for (const Entry& entry : entriesOf(folder.path)) {
        if (!m_visitor.goesOn())
            return false;
        take(folder, entry);
    }
    m_visitor.folderDone();
    return m_visitor.goesOn();
}

/// Regular files and folders, behind links, too, in their order.
std::vector<FolderWalk::Entry> FolderWalk::entriesOf(const std::string& folder)
{
    std::vector<Entry> entries;
    std::error_code error;
    fs::directory_iterator walk(systemPath(folder), error);
    for (; !error && walk != fs::directory_iterator(); walk.increment(error)) {
        std::error_code none;
        std::string name = nameOf(*walk);
        const bool isFolder = walk->is_directory(none);
        if (!isFolder && !(isMusicName(name) && walk->is_regular_file(none)))
            continue;
        if (m_rules.hidden || name.front() != '.')
            entries.push_back({std::move(name), isFolder, walk->is_symlink(none)});
    }
    if (error)
        m_visitor.failed(folder, error.message());
    std::sort(entries.begin(), entries.end(),
              [](const Entry& a, const Entry& b) { return comesFirst(a.name, b.name); });
    return entries;
}

/// Whether the rules let it in; what the user may not read or write is told.
bool FolderWalk::isTaken(const std::string& path)
{
    const std::string below = path.substr(m_below);
    for (const Glob& glob : m_rules.excluded)
        if (glob.matches(below))
            return false;
    if (!base::mayRead(path)) {
        m_visitor.failed(path, base::systemFailure().text);
        return false;
    }
    // Oddity 21: what the user cannot write is left out.
    if (m_rules.unwritable || base::mayWrite(path))
        return true;
    m_visitor.leftOut(path);
    return false;
}

void FolderWalk::take(const Folder& parent, const Entry& entry)
{
    const std::string path = joined(parent.path, entry.name);
    if (!isTaken(path))
        return;
    if (!entry.isFolder) {
        m_visitor.found(path);
        return;
    }
    base::FileState state;
    if (m_rules.oneFileSystem && base::stateOf(path, state) && state.device != m_device)
        return;
    enqueue(path, entry.isLink ? base::realPath(path) : joined(*parent.real, entry.name));
}
