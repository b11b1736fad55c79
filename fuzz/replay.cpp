// A fuzz target without libFuzzer: runs it over its seeds and findings, or over the files given.
#include "seeds.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QGuiApplication>

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {
void run(const QByteArray& bytes)
{
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.constData()),
                           std::size_t(bytes.size()));
}

void runFiles(const QStringList& paths)
{
    for (const QString& path : paths) {
        QFile file(path);
        if (!file.open(QIODevice::ReadOnly))
            qFatal("cannot read %s", qUtf8Printable(path));
        run(file.readAll());
    }
}
} // namespace

int main(int argc, char* argv[])
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QGuiApplication application(argc, argv);
    if (argc > 1) {
        runFiles(QCoreApplication::arguments().mid(1));
        return 0;
    }
    const QString program = QFileInfo(QCoreApplication::applicationFilePath()).baseName();
    const QList<Seeds::Seed> seeds = Seeds::of(program.section('_', 0, 0));
    if (seeds.isEmpty())
        qFatal("the target has no seeds");
    for (const Seeds::Seed& seed : seeds) {
        qInfo("%s", qUtf8Printable(seed.name));
        run(seed.bytes);
    }
    return 0;
}
