#pragma once

#include <QString>

/// The product's home page; set when the program is built.
inline QString homePage()
{
    return QStringLiteral(MELODRIFT_HOME_PAGE);
}
