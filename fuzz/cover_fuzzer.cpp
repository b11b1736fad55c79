// Arbitrary bytes as a cover: a picture no larger than asked for, or none.

#include "covers/coverloader.h"
#include "promise.h"

#include <QBuffer>
#include <QGuiApplication>
#include <QImageReader>

#include <cstddef>
#include <cstdint>

namespace {
/// Pictures that are larger are bounded by their pixels, and take too long here.
constexpr qint64 mostPixels = 256 * 1024;

void makeApplication()
{
    static char name[] = "cover_fuzzer";
    static char* arguments[] = {name, nullptr};
    static int count = 1;
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
    new QGuiApplication(count, arguments); // to the end of the process
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (!QCoreApplication::instance())
        makeApplication();
    QByteArray bytes = QByteArray::fromRawData(reinterpret_cast<const char*>(data), int(size));
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::ReadOnly);
    QImageReader reader(&buffer);
    reader.setDecideFormatFromContent(true);
    const QSize pixels = reader.size();
    if (qint64(pixels.width()) * pixels.height() > mostPixels)
        return 0;
    for (const int edge : {CoverLoader::songEdge, 7}) {
        buffer.seek(0);
        const QImage image = CoverLoader::decode(&buffer, edge);
        promise(image.width() <= edge && image.height() <= edge, "no picture is larger than asked for");
        promise(image.isNull() || !pixels.isEmpty(), "a picture has a size");
    }
    return 0;
}
