#include "common/skinplace.h"

#include <QCoreApplication>

QString SkinPlace::folder()
{
    return QCoreApplication::applicationDirPath();
}
