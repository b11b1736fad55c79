#pragma once

#include "common/skinpicture.h"
#include "songs/emptytexts.h"

#include <QWidget>

#include <map>

/// Says something in the middle of the views when they have nothing to show: a picture, a heading, lines
/// below it, and where a text offers that, a button. Lets the mouse through to them, but for the button.
class ViewNotice : public QWidget
{
    Q_OBJECT

public:
    /// Hidden, and over the views' parent, where setGeometry() has it lie. The button is the caller's, and of
    /// the same parent.
    ViewNotice(QWidget& button, QWidget* parent);

    /// Without a heading nothing is said.
    void say(const EmptyText& text);

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void moveEvent(QMoveEvent* event) override;

private:
    /// A piece of text in its place.
    struct Piece
    {
        QRect place;
        QString text;
    };

    void arrange();
    const SkinPicture& picture() const;

    QWidget& m_button;
    EmptyText m_text;
    QRect m_picturePlace;
    Piece m_heading;
    QVector<Piece> m_lines;
    /// Read when one first shows.
    mutable std::map<EmptyText::Picture, SkinPicture> m_pictures;
};
