#pragma once

#include <QByteArray>
#include <QString>
#include <QtGlobal>

#include <map>
#include <optional>
#include <string>
#include <unordered_map>

/// Covers that were taken out of files, and tracks out of libraries, in a folder of their own, each once by
/// its content. There is an end to their bytes: the ones that were put in longest ago go first. One thread at
/// a time, and no two processes.
class KeptCovers
{
public:
    /// The folder is made with the first cover. Path in bytes as the system has it.
    KeptCovers(const std::string& folder, qint64 mostBytes) : m_folder(folder), m_mostBytes(mostBytes) {}

    /// What a cover is called: different ones have different names.
    static std::string nameOf(const QByteArray& cover);
    /// Keeps it so that it outlives a power cut; the reason why not, or empty.
    QString keep(const QByteArray& cover);
    /// Nothing where it is not kept any more, or not whole.
    std::optional<QByteArray> find(const std::string& name) const;

private:
    struct Cover
    {
        std::string name;
        qint64 size = 0;
    };

    void look();
    void note(const Cover& cover);
    void makeRoom(qint64 bytes);
    QString write(const std::string& name, const QByteArray& cover) const;

    const std::string m_folder;
    const qint64 m_mostBytes;
    bool m_looked = false;
    std::map<qint64, Cover> m_covers;                ///< the oldest first
    std::unordered_map<std::string, qint64> m_turns; ///< of the names
    qint64 m_nextTurn = 0;
    qint64 m_bytes = 0; ///< of all
};
