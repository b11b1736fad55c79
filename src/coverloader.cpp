#include "coverloader.h"

#include "qiorvoutil.h"

QString CoverLoader::genericCoverPath()
{
    return QIOrvoUtil::getResourcePath() + QLatin1String("/Image/big.png");
}

QPixmap CoverLoader::genericCover()
{
    return load(genericCoverPath());
}

QPixmap CoverLoader::load(const QString& path)
{
    return QPixmap(path);
}
