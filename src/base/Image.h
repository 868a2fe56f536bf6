// An image with its encodings. Copies share pixels and encodings, so an image that is hashed and then stored
// is encoded once, and one that is only passed on is never decoded.
#pragma once

#include <QByteArray>
#include <QImage>

#include <memory>
#include <optional>

namespace corvatto {

// Any one thread at a time: a worker may prepare an image and hand it over.
class Image {
public:
    explicit Image(QImage pixels);

    // The image in a file; absent when the file cannot be read or is no image. Of a PNG file the bytes are
    // kept as its encoding, and are decoded only when somebody asks for the pixels.
    static std::optional<Image> fromFile(const QString& path);

    const QImage& pixels() const;

    QSize pixelSize() const; // pixels
    QSizeF size() const;     // points

    // The image as PNG, or empty when it cannot be encoded. Encoded at the first call, then kept.
    const QByteArray& pngData() const;

    // The image as TIFF, or empty when it cannot be encoded. Not kept.
    QByteArray tiffData() const;

    // One line that tells the kind and size of the image.
    QString description() const;

private:
    struct Shared;
    explicit Image(std::shared_ptr<Shared> shared);

    std::shared_ptr<Shared> m_shared;
};

} // namespace corvatto
