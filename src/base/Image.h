// A decoded image with its encodings. Copies share pixels and encodings, so an image that is hashed and then
// stored is encoded once.
#pragma once

#include <QByteArray>
#include <QImage>

#include <memory>
#include <optional>

namespace corvatto {

class Image {
public:
    explicit Image(QImage pixels);

    // The image in a file; absent when the file cannot be read or is no image. Of a PNG file the bytes are
    // kept as its encoding.
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
    std::shared_ptr<Shared> m_shared;
};

} // namespace corvatto
