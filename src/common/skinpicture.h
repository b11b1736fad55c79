#pragma once

#include <QIcon>
#include <QImage>
#include <QString>

#include <memory>

class QPainter;

/// One picture of the skin, at the scale of the screen it is drawn on: "name.png" on plain screens,
/// "name@2x.png" beside it, where there is one, on denser ones. Sizes are in points and the same at both
/// scales.
class SkinPicture
{
public:
    /// Separators may be slashes or backslashes. A path that begins with one backslash ("\pic\name.png") lies
    /// under the resource path.
    explicit SkinPicture(const QString& path);

    /// The same picture for all who ask, read anew once none of them is left; for files that nobody changes.
    /// GUI thread only.
    static std::shared_ptr<const SkinPicture> shared(const QString& path);

    /// The file that the path stands for, whether it holds a picture or not.
    const QString& file() const { return m_path; }
    /// Points; empty when the file holds no picture.
    QSize size() const;
    /// The picture for a screen of this device pixel ratio, its own ratio set. Null when the file holds none.
    const QImage& image(qreal devicePixelRatio) const;
    /// The picture for whatever this painter paints on.
    const QImage& image(const QPainter& painter) const;

    /// Reads a picture whatever its name says its type is; null when it is none or larger than a screen could
    /// ever need.
    static QImage read(const QString& path);
    /// The file of a picture, named with its extension, under the resource path.
    static QString path(const char* name);
    /// The picture at both scales, by its name as for path().
    static QIcon icon(const char* name);
    /// "dir/name.png" becomes "dir/name@2x.png".
    static QString doubledPath(const QString& path);

private:
    QString m_path;
    QImage m_plain;
    mutable QImage m_doubled;
    mutable bool m_doubledTried = false;
};
