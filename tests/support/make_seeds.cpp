// Writes what fuzz targets start from:
//     make_seeds DIR      files DIR/TARGET/NAME, of music DIR/TARGET-FORMAT/NAME
#include "seeds.h"

#include <QDir>
#include <QFile>
#include <QGuiApplication>

int main(int argc, char* argv[])
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QGuiApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() != 2)
        qFatal("usage: make_seeds DIR");
    for (const QString& target : Seeds::targets())
        for (const Seeds::Seed& seed : Seeds::of(target)) {
            const QString group = seed.group.isEmpty() ? QString() : QLatin1Char('-') + seed.group;
            const QDir folder(arguments.at(1) + QLatin1Char('/') + target + group);
            QFile file(folder.filePath(seed.name));
            if (!folder.mkpath(QStringLiteral(".")) || !file.open(QIODevice::WriteOnly) ||
                file.write(seed.bytes) != seed.bytes.size())
                qFatal("cannot write %s", qUtf8Printable(file.fileName()));
        }
    return 0;
}
