#include "covers/coverchoice.h"

#include "covers/coverloader.h"

#include <QDebug>
#include <QDir>
#include <QFile>
#include <QImageReader>
#include <QTemporaryFile>

#include <limits>

namespace {
bool isEmbeddable(QIODevice* device)
{
    QImageReader reader(device);
    reader.setDecideFormatFromContent(true);
    const QByteArray format = reader.format();
    return format == "jpeg" || format == "png";
}

/// A new file with the picture as PNG; empty where it cannot be written.
QString savedAsPng(const QImage& picture)
{
    QTemporaryFile file(QDir::tempPath() + QLatin1String("/cover-XXXXXX.png"));
    if (!file.open() || !picture.save(&file, "PNG") || !file.flush())
        return QString();
    file.setAutoRemove(false);
    return file.fileName();
}

QString refused(const QString& path, const char* reason)
{
    qWarning("the cover %s is not taken: %s", qUtf8Printable(path), reason);
    return QString();
}
} // namespace

QString CoverChoice::embeddable(const QString& path)
{
    if (CoverLoader::pictureSize(path).isEmpty())
        return refused(path, "it holds no picture");
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return refused(path, qUtf8Printable(file.errorString()));
    if (isEmbeddable(&file))
        return path;
    file.seek(0);
    const QImage picture = CoverLoader::decode(&file, std::numeric_limits<int>::max());
    if (picture.isNull())
        return refused(path, "it holds no picture");
    const QString png = savedAsPng(picture);
    return png.isEmpty() ? refused(path, "no PNG of it can be written") : png;
}
