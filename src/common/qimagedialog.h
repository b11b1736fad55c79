#pragma once

#include "common/skinpicture.h"

#include <QDialog>

#include <memory>

/// A dialog whose whole face is one picture.
class QImageDialog : public QDialog
{
    Q_OBJECT

public:
    explicit QImageDialog(QWidget* parent = nullptr, Qt::WindowFlags flags = Qt::WindowFlags());
    ~QImageDialog() override;

    /// Takes the face and fixes the dialog's size to it.
    bool SetImageBackgroud(const QString& path);
    static QString GetApplicationPath() { return s_strAppPath; }

    /// Above windows that stay on top of all others, too: it waits for its answer.
    void setVisible(bool visible) override;

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;

    /// Whether the dialog can be dragged by its title band; off, and nothing here turns it on.
    bool m_bMoveEnable = false;

private:
    std::unique_ptr<SkinPicture> m_pBackground;
    QRect m_rcDrag;
    bool m_bPressed = false;

    static QString s_strAppPath;
};
