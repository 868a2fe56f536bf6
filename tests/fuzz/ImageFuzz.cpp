#include "Fuzz.h"
#include "base/ImageDecoding.h"
#include "base/PngEncoding.h"

#include <QBuffer>
#include <QColorSpace>
#include <QImageWriter>

using namespace corvatto;

namespace {

QByteArray encoded(const QImage& image, const char* format, bool isSpecial = false) {
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    QImageWriter writer(&buffer, format);
    writer.setProgressiveScanWrite(isSpecial);
    writer.setCompression(isSpecial ? 1 : 0);
    if (isSpecial) {
        writer.setTransformation(QImageIOHandler::TransformationRotate90);
    }
    fuzz::require(writer.write(image));
    return bytes;
}

// Larger images only take longer.
bool isSmall(const QImage& image) {
    return image.width() <= 256 && image.height() <= 256;
}

} // namespace

QList<QByteArray> fuzz::seeds() {
    QImage image(24, 18, QImage::Format_ARGB32);
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            image.setPixel(x, y, qRgba(x * 10, y * 14, x * y, 255 - x));
        }
    }
    image.setColorSpace(QColorSpace(QColorSpace::AdobeRgb));
    QList<QByteArray> all;
    for (const auto format : {QImage::Format_Mono, QImage::Format_Indexed8, QImage::Format_Grayscale16,
                              QImage::Format_RGB32, QImage::Format_ARGB32, QImage::Format_RGBA64}) {
        for (const char* name : {"png", "tiff", "bmp"}) {
            all.append(encoded(image.convertToFormat(format), name));
        }
    }
    for (const char* name : {"tiff", "jpeg", "webp"}) {
        all.append(encoded(image, name, true));
    }
    all.append(encoded(image, "jpeg"));
    // Qt writes no GIF and no run-lengths.
    all.append(
        QByteArray::fromHex("47494638396103000200800000ff00000000ff21f90401000000002c000000000300020000"
                            "02024c81003b"));
    all.append(
        QByteArray::fromHex("424d46000000000000003e000000280000000400000002000000010008000100000000000000"
                            "00000000000000000200000000000000ff0000000000ff0004010000040100000001"));
    // A TIFF of which every directory is the next one's.
    all.append(QByteArray::fromHex("49492a00080000000100000103000100000004000000080000"
                                   "00"));
    return all;
}

// What looks like an image either is one, of a bearable size, that can be stored, or is refused.
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const QByteArray bytes = fuzz::bytesOf(data, size);
    const auto image = decodeImage(bytes);
    fuzz::require(!image || looksDecodable(bytes));
    if (image) {
        fuzz::require(!image->isNull() && image->sizeInBytes() <= maximumDecodedImageBytes);
    }
    if (image && isSmall(*image)) {
        const auto stored = decodeImage(encodePng(*image));
        fuzz::require(stored && stored->size() == image->size());
    }
    return 0;
}
