#include "Fuzz.h"
#include "base/ImageDecoding.h"
#include "base/PngEncoding.h"

#include <QBuffer>
#include <QColorSpace>
#include <QImageWriter>

using namespace corvatto;

namespace {

QByteArray encoded(const QImage& image, const char* format, bool isSpecial = false) {
    QBuffer buffer;
    QImageWriter writer(&buffer, format);
    writer.setProgressiveScanWrite(isSpecial);
    writer.setCompression(isSpecial ? 1 : 0);
    writer.setTransformation(isSpecial ? QImageIOHandler::TransformationRotate90
                                       : QImageIOHandler::TransformationNone);
    fuzz::require(writer.write(image));
    return buffer.data();
}

// What looks like an image either is one, of a bearable size, that can be stored, or is refused.
void run(const QByteArray& input) {
    const auto image = decodeImage(input);
    if (!image) {
        return;
    }
    fuzz::require(looksDecodable(input) && !image->isNull() &&
                  image->sizeInBytes() <= maximumDecodedImageBytes);
    if (image->width() <= 256 && image->height() <= 256) { // larger ones only take longer
        const auto stored = decodeImage(encodePng(*image));
        fuzz::require(stored && stored->size() == image->size());
    }
}

} // namespace

fuzz::Target fuzz::image() {
    QImage image(24, 18, QImage::Format_ARGB32);
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            image.setPixel(x, y, qRgba(x * 10, y * 14, x * y, 255 - x));
        }
    }
    image.setColorSpace(QColorSpace(QColorSpace::AdobeRgb));
    QList<QByteArray> seeds;
    for (const auto format : {QImage::Format_Mono, QImage::Format_Indexed8, QImage::Format_Grayscale16,
                              QImage::Format_RGB32, QImage::Format_ARGB32, QImage::Format_RGBA64}) {
        for (const char* name : {"png", "tiff", "bmp"}) {
            seeds.append(encoded(image.convertToFormat(format), name));
        }
    }
    for (const char* name : {"tiff", "jpeg", "webp"}) {
        seeds.append(encoded(image, name, true));
    }
    seeds.append(encoded(image, "jpeg"));
    for (const char* bytes : {
             // Qt writes no GIF and no run-lengths.
             "47494638396103000200800000ff00000000ff21f90401000000002c00000000030002000002024c81003b",
             "424d46000000000000003e0000002800000004000000020000000100080001000000000000000000000000000000020"
             "0"
             "000000000000ff0000000000ff0004010000040100000001",
             // A TIFF of which every directory is the next one's.
             "49492a0008000000010000010300010000000400000008000000",
         }) {
        seeds.append(QByteArray::fromHex(bytes));
    }
    return {seeds, run};
}
