#pragma once

#include "common/skinpicture.h"

#include <QLabel>

#include <memory>

/// A label that shows a picture or an animation of the skin smoothly on every screen; a picture is chosen
/// anew for the screen at every painting. Texts look as in every label.
class SkinLabel : public QLabel
{
    Q_OBJECT

public:
    explicit SkinLabel(QWidget* parent = nullptr);

    /// Shows the picture in place of what the label showed.
    void showPicture(const QString& path);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    std::unique_ptr<SkinPicture> m_picture;
};
