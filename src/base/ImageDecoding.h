// Decoding of image bytes that another program wrote.
#pragma once

#include <QByteArray>
#include <QImage>
#include <QSize>
#include <QString>

#include <optional>

namespace corvatto {

// The MIME types that decodeImage() understands, the preferred ones first: PNG, then TIFF, then the others; a
// format may have had names before it was registered. Whether the plug-in of one is installed shows when an
// image is decoded: to ask would load all there are, which takes 10 ms and some megabytes.
QList<QByteArray> imageTypes();

// The largest image that is decoded, in bytes of decoded pixels: several 8K screenshots, but not what a small
// malicious file can claim to unpack to.
constexpr qint64 maximumDecodedImageBytes = qint64{512} << 20;

// Whether `bytes` begin like an image of a size that decodeImage() accepts. Reads the header only.
bool looksDecodable(const QByteArray& bytes);

// Whether `bytes` are a PNG file of an accepted size with nothing missing or damaged, as its checksums tell.
// Decodes no pixels: about a millisecond for a screenshot.
bool isWholePng(const QByteArray& bytes);

// The first image in `bytes`, upright as its metadata demand. Absent when the bytes are not an image, are cut
// short or claim to unpack to more than maximumDecodedImageBytes.
std::optional<QImage> decodeImage(const QByteArray& bytes);

// The same for a file. With a `target` size in pixels (not empty), an image larger than the target may come
// back smaller, but never so small that it would not cover the target.
std::optional<QImage> decodeImageFile(const QString& path, QSize target = {});

} // namespace corvatto
