#include "base/ImageDecoding.h"

#include <QBuffer>
#include <QFile>
#include <QImageReader>
#include <QtEndian>

#include <algorithm>
#include <cstdlib>
#include <string_view>

#include <zlib.h>

namespace corvatto {
namespace {

// The format of bytes that begin with `header`, whatever their owner calls them. Empty when it is none of
// ours.
QByteArray formatOf(const QByteArray& header) {
    using namespace std::string_view_literals; // some signatures hold NUL characters
    const std::string_view bytes(header.constData(), static_cast<std::size_t>(header.size()));
    const auto begins = [bytes](auto... signatures) {
        return (bytes.starts_with(signatures) || ...);
    };
    if (begins("\x89PNG\r\n\x1A\n"sv)) {
        return "png";
    }
    if (begins("II*\0"sv, "MM\0*"sv, "II+\0"sv, "MM\0+"sv)) {
        return "tiff";
    }
    if (begins("\xFF\xD8\xFF"sv)) {
        return "jpeg";
    }
    if (begins("GIF87a"sv, "GIF89a"sv)) {
        return "gif";
    }
    if (begins("RIFF"sv) && bytes.substr(std::min<std::size_t>(8, bytes.size()), 4) == "WEBP"sv) {
        return "webp";
    }
    return begins("BM"sv) ? "bmp" : "";
}

constexpr qint64 signatureLength = 12; // bytes, of the longest

// Sixteen bytes hold a pixel of Qt's deepest format; most decoders produce four. Qt's allocation limit bounds
// those that produce more.
constexpr qint64 assumedBytesPerPixel = 4;

bool acceptableSize(const QSize& size) {
    return !size.isEmpty() &&
           qint64{size.width()} * qint64{size.height()} <= maximumDecodedImageBytes / assumedBytesPerPixel;
}

// The decoders of these two formats fill what is missing with grey or black and call it a success; the others
// refuse data that are cut short.

// A JPEG ends with an end-of-image marker behind a scan; one in the headers belongs to a thumbnail. Each scan
// costs a pass over all pixels, however few bytes it has: programs write ten, and a thousand would take
// minutes.
bool isSoundJpeg(const QByteArray& bytes) {
    constexpr int maximumScans = 32;
    int scans = 0;
    qsizetype at = 2; // behind the start-of-image marker
    while ((at = bytes.indexOf('\xFF', at)) >= 0 && at + 1 < bytes.size()) {
        const auto marker = static_cast<quint8>(bytes[at + 1]);
        if (marker == 0xD9) { // end of image
            return scans > 0;
        }
        if (marker == 0xDA && ++scans > maximumScans) {
            return false;
        }
        if (marker == 0xFF) { // a fill byte
            ++at;
        } else if (marker == 0x00 || (marker >= 0xD0 && marker <= 0xD8) || at + 4 > bytes.size()) {
            at += 2; // stands alone
        } else {
            at += 2 + qFromBigEndian<quint16>(bytes.constData() + at + 2);
        }
    }
    return false;
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

bool isSound(const QByteArray& bytes) {
    if (bytes.startsWith("\xFF\xD8")) {
        return isSoundJpeg(bytes);
    }
    return !bytes.startsWith("BM") || isCompleteBmp(bytes);
}

// Qt's default limit of 128 MB would refuse a screenshot of an 8K display. The limit is the whole process's,
// so it is set once, by whoever decodes first.
void raiseAllocationLimit() {
    [[maybe_unused]] static const bool isRaised = [] {
        QImageReader::setAllocationLimit(static_cast<int>(maximumDecodedImageBytes >> 20));
        return true;
    }();
}

// Prepares `reader` for what `device` holds. False when that is no image, or not of a size to be decoded.
bool prepare(QImageReader& reader, QIODevice& device) {
    const QByteArray format = formatOf(device.peek(signatureLength));
    if (format.isEmpty()) {
        return false;
    }
    raiseAllocationLimit();
    reader.setDevice(&device);
    reader.setAutoDetectImageFormat(false);
    reader.setFormat(format);
    return reader.canRead() && acceptableSize(reader.size());
}

std::optional<QImage> decode(QIODevice& device, QSize target) {
    QImageReader reader;
    if (!prepare(reader, device)) {
        return std::nullopt;
    }
    const QSize size = reader.size();
    reader.setAutoTransform(true);
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

// Decoders for anything else are not even asked: some know no limits, some recognise almost any bytes as
// theirs, and one for drawings opens whatever files the drawing names.
QList<QByteArray> imageTypes() {
    return {"image/png",      "image/tiff", "image/bmp",  "image/x-bmp",
            "image/x-MS-bmp", "image/webp", "image/jpeg", "image/gif"};
}

bool looksDecodable(const QByteArray& bytes) {
    QBuffer buffer;
    buffer.setData(bytes);
    buffer.open(QIODevice::ReadOnly);
    QImageReader reader;
    return prepare(reader, buffer);
}

// Each chunk has a length before and a checksum behind its content; the last one is empty.
bool isWholePng(const QByteArray& bytes) {
    constexpr qsizetype overhead = 12; // length, name and checksum
    if (!looksDecodable(bytes) || formatOf(bytes) != "png") {
        return false;
    }
    qsizetype at = 8; // behind the signature
    while (bytes.size() - at >= overhead) {
        const qint64 length = qFromBigEndian<quint32>(bytes.constData() + at);
        if (length > bytes.size() - at - overhead) {
            return false;
        }
        const auto* const named = reinterpret_cast<const Bytef*>(bytes.constData() + at + 4);
        const uLong checksum = crc32_z(0, named, static_cast<std::size_t>(length) + 4);
        if (checksum != qFromBigEndian<quint32>(named + 4 + length)) {
            return false;
        }
        if (std::equal(named, named + 4, "IEND")) {
            return true;
        }
        at += overhead + length;
    }
    return false;
}

std::optional<QImage> decodeImage(const QByteArray& bytes) {
    if (!isSound(bytes)) {
        return std::nullopt;
    }
    QBuffer buffer;
    buffer.setData(bytes);
    buffer.open(QIODevice::ReadOnly);
    return decode(buffer, {});
}

std::optional<QImage> decodeImageFile(const QString& path, QSize target) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? decode(file, target) : std::nullopt;
}

} // namespace corvatto
