#include "platform/ImageDecoding.h"

#include <QBuffer>
#include <QImageReader>
#include <QtEndian>

#include <algorithm>
#include <cstdlib>

namespace corvatto {
namespace {

// Sixteen bytes hold a pixel of Qt's deepest format; most decoders produce four.
constexpr qint64 assumedBytesPerPixel = 4;

bool acceptableSize(const QSize& size) {
    // Formats that do not tell their size before decoding are bounded by Qt's allocation limit instead.
    return !size.isValid() ||
           qint64{size.width()} * qint64{size.height()} <= maximumDecodedImageBytes / assumedBytesPerPixel;
}

// The decoders of these two formats fill what is missing with grey or black and call it a success; the others
// refuse data that are cut short.

// A JPEG ends with an end-of-image marker. One may also stand in a thumbnail in the headers, so that it
// counts only behind the first scan.
bool isCompleteJpeg(const QByteArray& bytes) {
    qsizetype at = 2; // behind the start-of-image marker
    while (at + 4 <= bytes.size() && bytes[at] == '\xFF') {
        const char marker = bytes[at + 1];
        if (marker == '\xFF') { // a fill byte
            ++at;
            continue;
        }
        if (marker == '\xDA') { // start of scan
            break;
        }
        at += 2 + qFromBigEndian<quint16>(bytes.constData() + at + 2);
    }
    return bytes.indexOf("\xFF\xD9", at) >= 0;
}

// An uncompressed BMP is as long as its header says: the offset of the pixels, then lines padded to four
// bytes.
bool isCompleteBmp(const QByteArray& bytes) {
    constexpr qsizetype headerLength = 34; // up to and including the compression
    if (bytes.size() < headerLength) {
        return false;
    }
    const auto field = [&bytes](qsizetype offset) {
        return qFromLittleEndian<qint32>(bytes.constData() + offset);
    };
    const bool isOldHeader = field(14) == 12; // 16-bit sizes and no compression
    const qint64 width = isOldHeader ? field(18) & 0xFFFF : field(18);
    const qint64 height = isOldHeader ? (field(18) >> 16) & 0xFFFF : std::abs(qint64{field(22)});
    const qint64 bitsPerPixel = (isOldHeader ? field(24) : field(28)) & 0xFFFF;
    const qint32 compression = isOldHeader ? 0 : field(30);
    if (compression == 1 || compression == 2) { // run lengths, which end by themselves
        return true;
    }
    const qint64 lineLength = (width * bitsPerPixel + 31) / 32 * 4;
    const qint64 offset = field(10);
    return lineLength > 0 && offset >= 0 && height <= (bytes.size() - offset) / lineLength;
}

bool isComplete(const QByteArray& bytes) {
    if (bytes.startsWith("\xFF\xD8")) {
        return isCompleteJpeg(bytes);
    }
    return !bytes.startsWith("BM") || isCompleteBmp(bytes);
}

void allowLargeImages() {
    // Qt's own limit of 128 MB is one for the whole process; it would refuse a screenshot of an 8K display.
    QImageReader::setAllocationLimit(static_cast<int>(maximumDecodedImageBytes >> 20));
}

std::optional<QImage> decode(QImageReader& reader, QSize target) {
    allowLargeImages();
    reader.setDecideFormatFromContent(true);
    reader.setAutoTransform(true);
    if (!reader.canRead()) {
        return std::nullopt;
    }
    const QSize size = reader.size();
    if (!acceptableSize(size)) {
        return std::nullopt;
    }
    if (target.isValid() && !target.isEmpty() && size.width() > target.width() &&
        size.height() > target.height()) {
        // Twice the target keeps enough for a smooth second scaling, also for an image that is turned on its
        // side.
        const int side = 2 * std::max(target.width(), target.height());
        const QSize scaled = size.scaled(side, side, Qt::KeepAspectRatioByExpanding);
        if (scaled.width() < size.width()) {
            reader.setScaledSize(scaled);
        }
    }
    QImage image;
    if (!reader.read(&image) || image.isNull()) {
        return std::nullopt;
    }
    return image;
}

} // namespace

const QList<QByteArray>& decodableImageTypes() {
    static const QList<QByteArray> types = [] {
        QList<QByteArray> all = QImageReader::supportedMimeTypes();
        const auto rank = [](const QByteArray& type) {
            return type == "image/png" ? 0 : type == "image/tiff" ? 1 : type.startsWith("image/svg") ? 3 : 2;
        };
        std::stable_sort(all.begin(), all.end(),
                         [&](const QByteArray& a, const QByteArray& b) { return rank(a) < rank(b); });
        return all;
    }();
    return types;
}

bool looksDecodable(const QByteArray& bytes) {
    QBuffer buffer;
    buffer.setData(bytes);
    QImageReader reader(&buffer);
    reader.setDecideFormatFromContent(true);
    return reader.canRead() && acceptableSize(reader.size());
}

std::optional<QImage> decodeImage(const QByteArray& bytes) {
    if (!isComplete(bytes)) {
        return std::nullopt;
    }
    QBuffer buffer;
    buffer.setData(bytes);
    QImageReader reader(&buffer);
    return decode(reader, {});
}

std::optional<QImage> decodeImageFile(const QString& path, QSize target) {
    QImageReader reader(path);
    return decode(reader, target);
}

} // namespace corvatto
