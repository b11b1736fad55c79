#include "collection/keptcovers.h"

#include "base/newfile.h"
#include "base/platform.h"

#include <QCryptographicHash>

#include <cstdio>
#include <filesystem>
#include <memory>
#include <system_error>
#include <utility>

namespace fs = std::filesystem;
using base::NewFile;

namespace {
struct Close
{
    void operator()(std::FILE* file) const { std::fclose(file); }
};

QString asText(const base::Failure& failure)
{
    return QString::fromStdString(failure.text);
}
} // namespace

std::string KeptCovers::nameOf(const QByteArray& cover)
{
    return QCryptographicHash::hash(cover, QCryptographicHash::Sha256).toHex().toStdString();
}

QString KeptCovers::keep(const QByteArray& cover)
{
    if (cover.size() > m_mostBytes)
        return QStringLiteral("its cover is larger than what is kept");
    look();
    const Cover kept = {nameOf(cover), cover.size()};
    std::error_code failure;
    if (find(kept.name)) {
        fs::last_write_time(m_folder + '/' + kept.name, fs::file_time_type::clock::now(), failure);
        note(kept);
        return QString();
    }
    fs::create_directories(m_folder, failure);
    makeRoom(cover.size());
    QString reason = write(kept.name, cover);
    if (reason.isEmpty())
        note(kept);
    return reason;
}

/// Once: what earlier runs kept. What killed ones left half-written goes in its turn, too.
void KeptCovers::look()
{
    if (std::exchange(m_looked, true))
        return;
    std::multimap<std::int64_t, Cover> found; // by the time when they were put in
    std::error_code ended;
    fs::directory_iterator entry(m_folder, ended);
    for (; !ended && entry != fs::directory_iterator(); entry.increment(ended)) {
        base::FileState state;
        if (base::stateOf(entry->path().string(), state) && state.regular)
            found.insert({state.modified, {entry->path().filename().string(), state.size}});
    }
    for (const auto& cover : found)
        note(cover.second);
}

/// It is the newest one now.
void KeptCovers::note(const Cover& cover)
{
    const auto known = m_turns.find(cover.name);
    if (known != m_turns.end())
        m_covers.erase(known->second);
    else
        m_bytes += cover.size;
    m_turns[cover.name] = m_nextTurn;
    m_covers.insert({m_nextTurn++, cover});
}

void KeptCovers::makeRoom(qint64 bytes)
{
    while (!m_covers.empty() && m_bytes + bytes > m_mostBytes) {
        const Cover oldest = m_covers.begin()->second;
        base::removeFile(m_folder + '/' + oldest.name);
        m_bytes -= oldest.size;
        m_turns.erase(oldest.name);
        m_covers.erase(m_covers.begin());
    }
}

QString KeptCovers::write(const std::string& name, const QByteArray& cover) const
{
    const std::string path = m_folder + '/' + name;
    base::Failure failure;
    const std::unique_ptr<NewFile> made = NewFile::forName(path, failure);
    if (!made)
        return asText(failure);
    const auto size = std::size_t(cover.size());
    if (base::writeAt(made->file(), 0, cover.constData(), size) != size || !base::syncToDevice(made->file()))
        return asText(base::systemFailure());
    return made->takeName(path, failure) == NewFile::Taking::Done ? QString() : asText(failure);
}

std::optional<QByteArray> KeptCovers::find(const std::string& name) const
{
    const std::unique_ptr<std::FILE, Close> file(base::openFile(m_folder + '/' + name, false));
    base::FileState state;
    if (!file || !base::stateOf(file.get(), state) || state.size > m_mostBytes)
        return std::nullopt;
    QByteArray cover(int(state.size), '\0');
    const auto size = std::size_t(cover.size());
    const bool whole = base::readAt(file.get(), 0, cover.data(), size) == size && nameOf(cover) == name;
    return whole ? std::make_optional(cover) : std::nullopt;
}
