#pragma once

#include <QObject>

/// Tells the window system of every dialog, and of the playback window, which window it belongs to. Under
/// Wayland a client cannot place its windows: the desktop puts those above the window that they belong to,
/// and others anywhere.
class DialogParents : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

    /// Under Wayland, for as long as the application runs; elsewhere dialogs are placed, and this does
    /// nothing.
    static void keepWhereNothingCanBePlaced();

    bool eventFilter(QObject* watched, QEvent* event) override;
};
