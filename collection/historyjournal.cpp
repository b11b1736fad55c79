#include "collection/historyjournal.h"

#include "base/newfile.h"
#include "base/userfolder.h"
#include "collection/historysteps.h"

#include <algorithm>
#include <map>

using base::Failure;
using base::NewFile;

namespace {
constexpr std::string_view firstLine = "melodrift changes 1\n";
constexpr std::size_t block = std::size_t(256) * 1024;

std::string fileIn(const std::string& folder)
{
    return folder + "/journal";
}

/// Hands out whole lines from a place on.
void readLines(std::FILE* file, std::int64_t begin, const HistoryJournal::TakeLine& take)
{
    std::string bytes;
    std::size_t used = 0; // bytes before it were handed out
    for (;;) {
        bytes.erase(0, used);
        used = 0;
        const std::size_t held = bytes.size();
        bytes.resize(held + block);
        const std::size_t got = base::readAt(file, begin, bytes.data() + held, block);
        begin += std::int64_t(got);
        bytes.resize(held + got);
        for (std::size_t end = bytes.find('\n', held); end != std::string::npos;
             end = bytes.find('\n', used)) {
            take(std::string_view(bytes).substr(used, end - used));
            used = end + 1;
        }
        if (got < block)
            return;
    }
}

bool isJournal(std::FILE* file)
{
    std::string begin(firstLine.size(), '\0');
    return base::readAt(file, 0, begin.data(), begin.size()) == begin.size() && begin == firstLine;
}

Failure notOurs(const std::string& path)
{
    return {path + " is no history that this version knows"};
}
} // namespace

std::unique_ptr<HistoryJournal> HistoryJournal::open(const std::string& folder, std::int64_t mostBytes,
                                                     std::chrono::milliseconds patience, Failure& failure)
{
    std::unique_ptr<HistoryJournal> journal(new HistoryJournal);
    journal->m_path = fileIn(folder);
    if (!base::makeUserFolder(folder, failure) || !journal->lock(folder + "/lock", patience, failure) ||
        !journal->load(failure))
        return nullptr;
    if (journal->m_end > mostBytes && !journal->shorten(mostBytes, failure))
        return nullptr;
    return journal;
}

/// A file of its own, since another journal may take the place of this one.
bool HistoryJournal::lock(const std::string& path, std::chrono::milliseconds patience, Failure& failure)
{
    m_lock.reset(base::lockUserFile(path, patience, failure));
    if (failure.kind == Failure::Kind::InUse)
        failure.text = "another run is changing files";
    return bool(m_lock);
}

/// What stands behind the last line feed was never answered.
bool HistoryJournal::load(Failure& failure)
{
    m_file.reset(base::openUserFile(m_path, firstLine, failure));
    if (!m_file)
        return false;
    base::FileState state;
    if (!base::stateOf(m_file.get(), state) || !isJournal(m_file.get())) {
        failure = notOurs(m_path);
        return false;
    }
    m_end = state.size;
    char last = 0;
    while (base::readAt(m_file.get(), m_end - 1, &last, 1) == 1 && last != '\n')
        --m_end;
    if (m_end == state.size || base::truncateTo(m_file.get(), m_end))
        return true;
    failure = base::systemFailure(m_path + " cannot be written: ");
    return false;
}

bool HistoryJournal::read(const std::string& folder, const TakeLine& take, Failure& failure)
{
    const File file(base::openFile(fileIn(folder), false));
    if (!file && errno == ENOENT)
        return true;
    if (!file)
        failure = base::systemFailure(fileIn(folder) + " cannot be opened: ");
    else if (!isJournal(file.get()))
        failure = notOurs(fileIn(folder));
    else
        readLines(file.get(), std::int64_t(firstLine.size()), take);
    return file && isJournal(file.get());
}

void HistoryJournal::read(const TakeLine& take) const
{
    readLines(m_file.get(), std::int64_t(firstLine.size()), take);
}

/// The one that began last: later lines may be about older ones.
int HistoryJournal::lastStep() const
{
    const auto begin = std::int64_t(firstLine.size());
    for (std::int64_t size = block;; size *= 8) {
        int last = 0;
        const std::int64_t from = std::max(begin, m_end - size);
        readLines(m_file.get(), from,
                  [&last](std::string_view line) { last = HistorySteps::begunBy(line).value_or(last); });
        if (last > 0 || from == begin)
            return last;
    }
}

bool HistoryJournal::append(const std::string& lines, Safety safety, Failure& failure)
{
    errno = ENOSPC; // what fewer bytes mean
    if (base::writeAt(m_file.get(), m_end, lines.data(), lines.size()) == lines.size() &&
        (safety == Safety::Kill || base::syncToDevice(m_file.get()))) {
        m_end += std::int64_t(lines.size());
        return true;
    }
    failure = base::systemFailure(m_path + " cannot be written: ");
    base::truncateTo(m_file.get(), m_end);
    return false;
}

void HistoryJournal::sync()
{
    base::syncToDevice(m_file.get());
}

int HistoryJournal::firstStepToKeep(std::int64_t mostBytes) const
{
    std::map<int, std::int64_t> sizes;
    read([&sizes](std::string_view line) {
        sizes[HistorySteps::stepOf(line).value_or(0)] += std::int64_t(line.size()) + 1;
    });
    std::int64_t kept = 0;
    int first = 0;
    for (auto step = sizes.rbegin(); step != sizes.rend(); ++step) {
        kept += step->second;
        if (first > 0 && kept > mostBytes)
            break;
        first = step->first;
    }
    return first;
}

/// The journal without the steps before that one.
bool HistoryJournal::copyFrom(int first, std::FILE* to) const
{
    std::string bytes(firstLine);
    std::int64_t end = 0;
    bool whole = true;
    const auto write = [&] {
        whole = whole && base::writeAt(to, end, bytes.data(), bytes.size()) == bytes.size();
        end += std::int64_t(bytes.size());
        bytes.clear();
    };
    read([&](std::string_view line) {
        if (HistorySteps::stepOf(line).value_or(0) < first)
            return;
        bytes.append(line).append("\n");
        if (bytes.size() >= block)
            write();
    });
    write();
    return whole && base::syncToDevice(to);
}

/// Without success it stays as it is.
bool HistoryJournal::shorten(std::int64_t mostBytes, Failure& failure)
{
    Failure borne;
    const std::unique_ptr<NewFile> shorter = NewFile::beside(m_path, NewFile::Content::Empty, borne);
    if (!shorter || !copyFrom(firstStepToKeep(mostBytes / 2), shorter->file()))
        return true;
    shorter->replaceOriginal(borne);
    return load(failure);
}
