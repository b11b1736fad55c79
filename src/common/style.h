#pragma once

#include <QColor>
#include <QFont>
#include <QString>

/// The colours and fonts of everything that code paints or sets. Forms and pictures have the same palette.
namespace Style {
// Words.
inline constexpr QColor ink(0x17, 0x32, 0x4D); ///< values and headings
inline constexpr QColor text(0x28, 0x40, 0x4F);
inline constexpr QColor muted(0x4F, 0x6B, 0x7C);  ///< captions of fields, secondary text
inline constexpr QColor chosen(0x0B, 0x5C, 0x93); ///< the chosen row of navigation; links
inline constexpr QColor locked(0x5E, 0x74, 0x82); ///< rows of navigation that cannot be chosen now
inline constexpr QColor menuText(0x2C, 0x4B, 0x66);
inline constexpr QColor textOnColour(0xFF, 0xFF, 0xFF); ///< on badges and bars
inline constexpr QColor undefinedText(0xFF, 0x00, 0x00);
inline constexpr QColor dangerText(0xBE, 0x34, 0x2A); ///< before something goes for good

// Faces.
inline constexpr QColor window(0xEE, 0xF6, 0xFB);
inline constexpr QColor paper(0xFD, 0xFE, 0xFF);
inline constexpr QColor panel(0xF5, 0xFA, 0xFD); ///< the right column
inline constexpr QColor pane(0xF4, 0xF4, 0xF4);  ///< navigation
inline constexpr QColor groupRow(0xE7, 0xF7, 0xFF);
inline constexpr QColor stripe(0xF0, 0xF6, 0xFC);
inline constexpr QColor header(0xEA, 0xF4, 0xFB);
inline constexpr QColor selection(0xCD, 0xE8, 0xF8);
inline constexpr QColor accentSoft(0xE0, 0xF1, 0xFB);
inline constexpr QColor menuHovered(0xD5, 0xEA, 0xF7);
inline constexpr QColor menuPressed(0xBF, 0xE2, 0xF5);
inline constexpr QColor veil(0xFF, 0xFF, 0xFF, 0x99); ///< over what cannot be clicked now

inline constexpr double lockedOpacity = 0.45; ///< of pictures that do not answer now

// Lines.
inline constexpr QColor line(0xC9, 0xDD, 0xE9);
inline constexpr QColor headerLine(0xD9, 0xE8, 0xF2);
inline constexpr QColor fieldLine(0xDD, 0xEB, 0xF4);
inline constexpr QColor divider(0xAA, 0xAA, 0xAA);
inline constexpr QColor groupLine(0xC0, 0xC0, 0xC0);
inline constexpr QColor outline(0x9C, 0xCB, 0xE6); ///< of cards
inline constexpr QColor editorLine(0x8C, 0xC4, 0xE4);
inline constexpr QColor editorFocus(0x12, 0x7D, 0xBB);

// The marks of navigation.
inline constexpr QColor mark(0x56, 0x72, 0x84);
inline constexpr QColor markChosen(0x0F, 0x79, 0xB8);
inline constexpr QColor markSoft(0x8C, 0xC4, 0xE4);
inline constexpr QColor danger(0xDE, 0x4C, 0x3F); ///< what failed
inline constexpr QColor amber(0xE8, 0xA3, 0x3A);
inline constexpr QColor amberEdge(0xB9, 0x77, 0x1B);
inline constexpr QColor amberInk(0x4A, 0x2C, 0x05);

/// The family of everything but captions of buttons; at the start it becomes the application's.
inline QString family()
{
    return QStringLiteral("Tahoma");
}

inline QString buttonFamily()
{
    return QStringLiteral("Arial");
}

inline QFont font(int points, int weight = -1)
{
    return QFont(family(), points, weight);
}

inline QFont buttonFont()
{
    return QFont(buttonFamily(), 12, QFont::Normal);
}
} // namespace Style
