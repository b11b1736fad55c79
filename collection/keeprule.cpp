#include "collection/keeprule.h"

#include "collection/fileplace.h"

#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <array>
#include <functional>
#include <iterator>

namespace {
struct Name
{
    const char* name;
    KeepRule::Kind kind;
    const char* reason;
};

constexpr std::array<Name, 6> names = {
    {{"best", KeepRule::Kind::Best, "sounds best"},
     {"first", KeepRule::Kind::First, "is the first"},
     {"newest", KeepRule::Kind::Newest, "is the newest"},
     {"oldest", KeepRule::Kind::Oldest, "is the oldest"},
     {"largest", KeepRule::Kind::Largest, "is the largest"},
     {"shortest-path", KeepRule::Kind::ShortestPath, "has the shortest path"}}};
const std::string inFolder = "in:";

/// What is read through the path.
base::FileState fileOf(const SongCopy& copy)
{
    return copy.state.file.link ? FileState::of(copy.path).file : copy.state.file;
}

qint64 pathLength(const SongCopy& copy)
{
    return FilePlace::of(copy.path).path().size();
}

/// Those that the number is highest of.
QVector<int> highest(const QVector<SongCopy>& copies, const QVector<int>& among,
                     const std::function<qint64(const SongCopy&)>& number)
{
    QVector<int> found;
    qint64 most = 0;
    for (const int position : among) {
        const qint64 own = number(copies.at(position));
        if (found.isEmpty() || own > most) {
            most = own;
            found.clear();
        }
        if (own == most)
            found.append(position);
    }
    return found;
}

QVector<int> bestOf(const QVector<SongCopy>& copies, const QVector<int>& among)
{
    QVector<BestCopy::Sound> sounds;
    std::transform(among.begin(), among.end(), std::back_inserter(sounds),
                   [&copies](int position) { return copies.at(position).sound; });
    QVector<int> found = BestCopy::findAll(sounds);
    for (int& position : found)
        position = among.at(position);
    return found;
}

QVector<int> thoseIn(const QByteArray& folder, const QVector<SongCopy>& copies, const QVector<int>& among)
{
    QVector<int> found;
    std::copy_if(among.begin(), among.end(), std::back_inserter(found), [&](int position) {
        return FilePlace::of(copies.at(position).path).path().startsWith(folder);
    });
    return found.isEmpty() ? among : found;
}
} // namespace

std::optional<KeepRule> KeepRule::named(const std::string& name, QString& problem)
{
    for (const Name& known : names)
        if (name == known.name)
            return KeepRule(known.kind);
    const QString shown = QFile::decodeName(name.c_str());
    if (name.compare(0, inFolder.size(), inFolder) != 0) {
        problem = QStringLiteral(
                      "\"%1\" is no rule: best, first, newest, oldest, largest, shortest-path or in:FOLDER")
                      .arg(shown);
        return std::nullopt;
    }
    KeepRule rule(Kind::InFolder);
    rule.m_folder = QByteArray::fromStdString(base::realPath(name.substr(inFolder.size())));
    if (!QFileInfo(QFile::decodeName(rule.m_folder)).isDir()) {
        problem = QStringLiteral("there is no folder \"%1\"").arg(shown.mid(int(inFolder.size())));
        return std::nullopt;
    }
    if (!rule.m_folder.endsWith('/'))
        rule.m_folder += '/';
    return rule;
}

QString KeepRule::reason() const
{
    for (const Name& known : names)
        if (m_kind == known.kind)
            return QLatin1String(known.reason);
    return QStringLiteral("lies in %1").arg(QFile::decodeName(m_folder.chopped(m_folder.size() > 1 ? 1 : 0)));
}

QVector<int> KeepRule::choose(const QVector<SongCopy>& copies, const QVector<int>& among) const
{
    if (among.size() < 2)
        return among;
    switch (m_kind) {
    case Kind::Best:
        return bestOf(copies, among);
    case Kind::First:
        return among.mid(0, 1);
    case Kind::Newest:
        return highest(copies, among, [](const SongCopy& copy) { return fileOf(copy).modified; });
    case Kind::Oldest:
        return highest(copies, among, [](const SongCopy& copy) { return -fileOf(copy).modified; });
    case Kind::Largest:
        return highest(copies, among, [](const SongCopy& copy) { return fileOf(copy).size; });
    case Kind::ShortestPath:
        return highest(copies, among, [](const SongCopy& copy) { return -pathLength(copy); });
    case Kind::InFolder:
        return thoseIn(m_folder, copies, among);
    }
    return among;
}
