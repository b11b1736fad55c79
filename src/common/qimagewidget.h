#pragma once

#include "common/skinpicture.h"

#include <QWidget>

#include <memory>

/// A widget that shows one picture scaled to its size and reports presses.
class QImageWidget : public QWidget
{
    Q_OBJECT

public:
    explicit QImageWidget(QWidget* parent = nullptr, Qt::WindowFlags flags = Qt::WindowFlags());
    ~QImageWidget() override;

    /// Shows the picture at once; fixes the widget's size to it unless `keepSize`.
    bool SetImageBackgroud(const QString& path, bool keepSize = false);
    /// Whether the widget follows the pressed pointer.
    void SetGrabEnable(bool enable) { m_bGrabEnable = enable; }
    bool GetGrabEnable() const { return m_bGrabEnable; }
    /// The application directory with a separator at its end, once a widget of this kind was made.
    static QString GetApplicationPath() { return s_strAppPath; }

signals:
    /// On press, of any mouse button.
    void widgetClick();

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;

private:
    std::unique_ptr<SkinPicture> m_pPixmap;
    bool m_bPressed = false;
    bool m_bGrabEnable = false;

    static QString s_strAppPath;
};
