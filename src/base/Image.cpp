#include "base/Image.h"

#include "base/ImageDecoding.h"
#include "base/PngEncoding.h"

#include <QBuffer>
#include <QFile>
#include <QImageWriter>

namespace corvatto {

struct Image::Shared {
    QImage pixels;
    std::optional<QByteArray> png;
};

Image::Image(QImage pixels) : m_shared(std::make_shared<Shared>(Shared{std::move(pixels), std::nullopt})) {}

std::optional<Image> Image::fromFile(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        return std::nullopt;
    }
    QByteArray bytes = file.readAll();
    auto pixels = decodeImage(bytes);
    if (!pixels) {
        return std::nullopt;
    }
    Image image(std::move(*pixels));
    if (bytes.startsWith("\x89PNG")) {
        image.m_shared->png = std::move(bytes);
    }
    return image;
}

const QImage& Image::pixels() const {
    return m_shared->pixels;
}

QSize Image::pixelSize() const {
    return m_shared->pixels.size();
}

QSizeF Image::size() const {
    return m_shared->pixels.deviceIndependentSize();
}

const QByteArray& Image::pngData() const {
    if (!m_shared->png) {
        m_shared->png = encodePng(m_shared->pixels);
    }
    return *m_shared->png;
}

QByteArray Image::tiffData() const {
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    if (!QImageWriter(&buffer, "tiff").write(m_shared->pixels)) {
        return {};
    }
    return bytes;
}

QString Image::description() const {
    const QSize size = pixelSize();
    return QStringLiteral("Image %1x%2, format %3")
        .arg(size.width())
        .arg(size.height())
        .arg(static_cast<int>(m_shared->pixels.format()));
}

} // namespace corvatto
