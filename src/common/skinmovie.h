#pragma once

#include <QMovie>

class QLabel;

/// An animation of the skin. A label shows it at the scale of the label's screen, as SkinPicture does for
/// a still picture; its size in points is the same at both scales.
class SkinMovie : public QMovie
{
    Q_OBJECT

public:
    /// `name` is the picture's file name with its extension.
    explicit SkinMovie(const char* name, QObject* parent = nullptr);

    /// Puts the animation into the label and runs it from its first frame, at the scale of the screen that
    /// the label is on now. stop() holds it; the label shows it until it gets another content or the movie is
    /// destroyed.
    void startIn(QLabel* label);
    /// Points; empty before the animation was started.
    QSize sizeInPoints() const;

private:
    QString m_path;
};
