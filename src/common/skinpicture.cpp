#include "common/skinpicture.h"

#include "common/picturelimits.h"
#include "common/skinplace.h"

#include <QFileInfo>
#include <QHash>
#include <QImageReader>
#include <QPainter>

namespace {
/// Either separator is understood on every system, a path that begins with one backslash lies in the skin,
/// and a name without an extension stands for a PNG.
QString existingFile(QString path)
{
    if (path.startsWith(QLatin1Char('\\')) && !path.startsWith(QLatin1String("\\\\")))
        path.prepend(SkinPlace::folder());
    if (QFileInfo::exists(path))
        return path;
    path.replace(QLatin1Char('\\'), QLatin1Char('/'));
    const QString png = path + QLatin1String(".png");
    return QFileInfo(path).suffix().isEmpty() && QFileInfo::exists(png) ? png : path;
}

QImage bounded(QImageReader& reader)
{
    return PictureLimits::readableSize(reader).isEmpty() ? QImage() : reader.read();
}
} // namespace

SkinPicture::SkinPicture(const QString& path) : m_path(existingFile(path)), m_plain(read(m_path))
{
    if (m_plain.isNull())
        qWarning("the picture %s does not load", qUtf8Printable(path));
}

std::shared_ptr<const SkinPicture> SkinPicture::shared(const QString& path)
{
    static QHash<QString, std::weak_ptr<const SkinPicture>> pictures;
    std::weak_ptr<const SkinPicture>& known = pictures[path];
    std::shared_ptr<const SkinPicture> picture = known.lock();
    if (!picture || picture->size().isEmpty())
        known = picture = std::make_shared<const SkinPicture>(path);
    return picture;
}

QSize SkinPicture::size() const
{
    return m_plain.size();
}

const QImage& SkinPicture::image(qreal devicePixelRatio) const
{
    if (devicePixelRatio <= 1 || m_plain.isNull())
        return m_plain;
    if (!m_doubledTried) {
        m_doubledTried = true;
        m_doubled = read(doubledPath(m_path));
        m_doubled.setDevicePixelRatio(2);
    }
    return m_doubled.isNull() ? m_plain : m_doubled;
}

const QImage& SkinPicture::image(const QPainter& painter) const
{
    return image(painter.deviceTransform().m11());
}

QImage SkinPicture::read(const QString& path)
{
    const QFileInfo file(path);
    if (!file.isFile())
        return QImage();
    // As its name says first: else the readers of all formats would be loaded to ask each of them.
    QImageReader named(path, file.suffix().toLower().toLatin1());
    named.setAutoDetectImageFormat(false);
    if (named.canRead())
        return bounded(named);
    QImageReader any(path);
    any.setDecideFormatFromContent(true);
    return bounded(any);
}

QIcon SkinPicture::icon(const char* name)
{
    const SkinPicture picture(path(name));
    QIcon icon(QPixmap::fromImage(picture.image(1)));
    icon.addPixmap(QPixmap::fromImage(picture.image(2)));
    return icon;
}

QString SkinPicture::path(const char* name)
{
    return SkinPlace::folder() + QLatin1String("/Image/") + QLatin1String(name);
}

QString SkinPicture::doubledPath(const QString& path)
{
    const QFileInfo file(path);
    const QString suffix = file.suffix().isEmpty() ? QString() : QLatin1Char('.') + file.suffix();
    return path.left(path.size() - suffix.size()) + QLatin1String("@2x") + suffix;
}
