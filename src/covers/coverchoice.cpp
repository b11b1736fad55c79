#include "covers/coverchoice.h"

#include "covers/coverloader.h"

#include <QDebug>
#include <QDir>
#include <QFile>
#include <QFileInfo>
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

CoverChoice::Choice refused(const QString& path, const QString& reason)
{
    qWarning("the cover %s is not taken: %s", qUtf8Printable(path), qUtf8Printable(reason));
    return {QString(), reason};
}

/// "32", "0.5": rounded down, so that what is said to fit does.
QString megabytes(qint64 bytes)
{
    const qint64 tenths = bytes * 10 / (1024 * 1024);
    return QString::number(double(tenths) / 10);
}

CoverChoice::Choice ifItFits(const QString& chosen, const QString& path, qint64 most)
{
    if (QFileInfo(path).size() <= most)
        return {path, QString()};
    return refused(chosen, QStringLiteral("it is too large, the song's file takes a picture of %1 MB at most")
                               .arg(megabytes(most)));
}
} // namespace

CoverChoice::Choice CoverChoice::embeddable(const QString& path, qint64 most)
{
    const QString noPicture = QStringLiteral("it holds no picture that can be shown");
    if (CoverLoader::pictureSize(path).isEmpty())
        return refused(path, noPicture);
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return refused(path, file.errorString());
    if (isEmbeddable(&file))
        return ifItFits(path, path, most);
    file.seek(0);
    const QImage picture = CoverLoader::decode(&file, std::numeric_limits<int>::max());
    if (picture.isNull())
        return refused(path, noPicture);
    const QString png = savedAsPng(picture);
    return png.isEmpty() ? refused(path, QStringLiteral("no PNG of it can be written"))
                         : ifItFits(path, png, most);
}
