#include "songs/trackcover.h"

#include "itunes/eyetunes.h"
#include "itunes/itunestrackrecord.h"
#include "itunes/tunesedit.h"

#include <QDir>
#include <QFile>

#include <algorithm>
#include <array>

QString TrackCover::folder()
{
    // Oddity 23: no separator in between, the name is glued to the temporary path.
    return QDir::tempPath() + QLatin1String("imagefile");
}

QString TrackCover::pathIn(const QString& folder, const iTunesTrackRecord& track)
{
    return folder + QLatin1Char('/') + QString::fromUtf8(track.persistentId);
}

bool TrackCover::isOwn(const QString& path, const iTunesTrackRecord& track)
{
    return path == pathIn(folder(), track);
}

void TrackCover::fetch(const QString& path, quint64 persistentId)
{
    using Buffer = std::array<char, 256>;
    Buffer cover = {};
    std::array<Buffer, 5> outputs = {};
    const QByteArray name = path.toUtf8();
    if (name.size() >= int(cover.size())) {
        qWarning("the cover path %s is too long", name.constData());
        return;
    }
    std::copy(name.begin(), name.end(), cover.begin());
    const int failed = get_trackWithPresistentID(EyeTunes::sharedInstance(), persistentId, outputs[0].data(),
                                                 outputs[1].data(), outputs[2].data(), outputs[3].data(),
                                                 nullptr, cover.data(), outputs[4].data());
    // A cover that was there before is not this track's any more.
    if (failed)
        QFile::remove(path);
}
