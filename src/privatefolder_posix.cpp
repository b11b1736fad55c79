#include "openfolder.h"
#include "privatefolder.h"

#include <QDir>
#include <QFile>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <fcntl.h>
#include <thread>
#include <unistd.h>

namespace {
const std::string prefix = "melodrift-";
const std::string drawn = "XXXXXX";
constexpr int attempts = 100;

bool isOurName(const std::string& name)
{
    return name.size() == prefix.size() + drawn.size() && name.compare(0, prefix.size(), prefix) == 0 &&
           std::all_of(name.begin() + std::ptrdiff_t(prefix.size()), name.end(), [](char letter) {
               return (letter >= '0' && letter <= '9') || (letter >= 'A' && letter <= 'Z') ||
                      (letter >= 'a' && letter <= 'z');
           });
}

/// A run puts nothing there but "tmp" and what is glued to that name. Whatever holds something else is a
/// folder of the user's own that happens to be called so.
bool holdsOnlyOurs(const OpenFolder& folder)
{
    const std::vector<OpenFolder::Entry> entries = folder.entries();
    return std::all_of(entries.begin(), entries.end(),
                       [](const OpenFolder::Entry& entry) { return entry.name.compare(0, 3, "tmp") == 0; });
}

/// A folder may have gone and a new one come under its name since it was listed: what counts is what was
/// locked.
void removeUnlessInUse(const OpenFolder& parent, const std::string& name)
{
    const OpenFolder folder(parent.descriptor(), name.c_str());
    if (!folder.isOpen() || !folder.isPrivate() || !folder.lock() ||
        !folder.standsUnder(parent.descriptor(), name.c_str()) || !holdsOnlyOurs(folder))
        return;
    folder.removeContents();
    ::unlinkat(parent.descriptor(), name.c_str(), AT_REMOVEDIR);
}

void removeLeftOnes(const OpenFolder& parent)
{
    try {
        for (const OpenFolder::Entry& entry : parent.entries())
            if (entry.isFolder && isOurName(entry.name))
                removeUnlessInUse(parent, entry.name);
    } catch (const std::exception& error) {
        qWarning("what earlier runs left stays: %s", error.what());
    }
}
} // namespace

class PrivateFolder::Data
{
public:
    explicit Data(const QString& parent);
    ~Data();
    Q_DISABLE_COPY(Data)

    QString path;

private:
    bool make();
    bool takeOver(const std::string& made);
    void startSweeping();

    const std::string m_place; ///< absolute
    std::string m_name;
    OpenFolder m_parent;
    OpenFolder m_folder;
    std::thread m_sweeper;
};

PrivateFolder::Data::Data(const QString& parent)
    : m_place(QFile::encodeName(QDir(parent).absolutePath()).toStdString()),
      m_parent(AT_FDCWD, (m_place + "/.").c_str()) // the user's choice may be a link
{
    if (!make()) {
        qWarning("no private temporary folder in %s: %s", m_place.c_str(), std::strerror(errno));
        return;
    }
    path = QFile::decodeName((m_place + '/' + m_name).c_str());
    startSweeping();
}

/// Between its making and its lock a folder looks like a left one to another program that starts: when that
/// one was quicker, a further folder is made.
bool PrivateFolder::Data::make()
{
    for (int attempt = 0; attempt < attempts; ++attempt) {
        std::string made = m_place;
        made.append("/").append(prefix).append(drawn);
        if (!::mkdtemp(made.data()))
            return false;
        if (takeOver(made.substr(m_place.size() + 1)))
            return true;
        ::rmdir(made.c_str());
    }
    return false;
}

bool PrivateFolder::Data::takeOver(const std::string& made)
{
    OpenFolder folder(m_parent.descriptor(), made.c_str());
    // Where nobody can lock, nobody takes it for a left one.
    bool unlockable = false;
    if (!folder.isOpen() || (!folder.lock(&unlockable) && !unlockable) ||
        !folder.standsUnder(m_parent.descriptor(), made.c_str()))
        return false;
    m_folder = std::move(folder);
    m_name = made;
    return true;
}

void PrivateFolder::Data::startSweeping()
{
    try {
        m_sweeper = std::thread([this] { removeLeftOnes(m_parent); });
    } catch (const std::system_error&) {
        removeLeftOnes(m_parent);
    }
}

PrivateFolder::Data::~Data()
{
    if (m_sweeper.joinable())
        m_sweeper.join();
    if (!m_folder.isOpen())
        return;
    m_folder.removeContents();
    if (m_folder.standsUnder(m_parent.descriptor(), m_name.c_str()) &&
        ::unlinkat(m_parent.descriptor(), m_name.c_str(), AT_REMOVEDIR) != 0)
        qWarning("the temporary folder %s stays: %s", qUtf8Printable(path), std::strerror(errno));
}

PrivateFolder::PrivateFolder(const QString& parent) : m_data(std::make_unique<Data>(parent)) {}

PrivateFolder::~PrivateFolder() = default;

QString PrivateFolder::path() const
{
    return m_data->path;
}
