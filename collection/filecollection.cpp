#include "collection/filecollection.h"

#include "base/text.h"
#include "collection/folderwalk.h"
#include "collection/formats.h"

#include <utility>

namespace {
void take(const QString& path, FileCollection::Found& files)
{
    if (FileCollection::isMusicFile(path))
        files.music.append(path);
    else if (Formats::isWindowsMediaEnding(path.right(3)))
        files.windowsMedia.append(path);
}

/// What cannot be read or written, or has no text for a name, is passed over.
class Collector final : public FolderWalk::Visitor
{
public:
    explicit Collector(std::function<bool(int found)> step) : m_step(std::move(step)) {}

    void found(const std::string& path) override
    {
        if (base::isUtf8(path))
            take(QString::fromStdString(path), files);
    }
    void failed(const std::string&, const std::string&) override {}
    void leftOut(const std::string&) override {}
    bool goesOn() override { return m_goesOn; }
    void folderDone() override { m_goesOn = !m_step || m_step(files.music.size()); }

    FileCollection::Found files;

private:
    const std::function<bool(int found)> m_step;
    bool m_goesOn = true;
};
} // namespace

bool FileCollection::isMusicFile(const QString& path)
{
    return Formats::isMusicEnding(path.right(3));
}

QStringList FileCollection::musicFilesUnder(const QString& path, const std::function<bool(int found)>& step)
{
    return filesUnder(path, step).music;
}

FileCollection::Found FileCollection::filesUnder(const QString& path,
                                                 const std::function<bool(int found)>& step)
{
    const std::string start = path.toStdString();
    Collector collector(step);
    if (FolderWalk::isFolder(start))
        FolderWalk({}, collector).walk(start);
    else
        take(path, collector.files);
    return collector.files;
}
