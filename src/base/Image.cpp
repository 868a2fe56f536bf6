#include "base/Image.h"

#include "base/ImageDecoding.h"
#include "base/PngEncoding.h"

#include <QBuffer>
#include <QFile>
#include <QImageWriter>

namespace corvatto {

struct Image::Shared {
    std::optional<QImage> pixels; // one of the two at least
    std::optional<QByteArray> png;
};

Image::Image(std::shared_ptr<Shared> shared) : m_shared(std::move(shared)) {}

Image::Image(QImage pixels) : Image(std::make_shared<Shared>(Shared{std::move(pixels), std::nullopt})) {}

std::optional<Image> Image::fromFile(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        return std::nullopt;
    }
    QByteArray bytes = file.readAll();
    if (isWholePng(bytes)) {
        return Image(std::make_shared<Shared>(Shared{std::nullopt, std::move(bytes)}));
    }
    auto pixels = decodeImage(bytes);
    return pixels ? std::optional(Image(std::move(*pixels))) : std::nullopt;
}

const QImage& Image::pixels() const {
    if (!m_shared->pixels) {
        m_shared->pixels = decodeImage(*m_shared->png).value_or(QImage());
    }
    return *m_shared->pixels;
}

QSize Image::pixelSize() const {
    return pixels().size();
}

QSizeF Image::size() const {
    return pixels().deviceIndependentSize();
}

const QByteArray& Image::pngData() const {
    if (!m_shared->png) {
        m_shared->png = encodePng(pixels());
    }
    return *m_shared->png;
}

QByteArray Image::tiffData() const {
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    if (!QImageWriter(&buffer, "tiff").write(pixels())) {
        return {};
    }
    return bytes;
}

QString Image::description() const {
    const QSize size = pixelSize();
    return QStringLiteral("Image %1x%2, format %3")
        .arg(size.width())
        .arg(size.height())
        .arg(static_cast<int>(pixels().format()));
}

} // namespace corvatto
