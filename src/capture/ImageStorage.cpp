#include "capture/ImageStorage.h"

#include "base/Diagnostics.h"
#include "base/FileSystem.h"
#include "base/ImageDecoding.h"

#include <QFileInfo>

#include <algorithm>
#include <cmath>

namespace corvatto::ImageStorage {
namespace {

constexpr double thumbnailSide = 360;       // points
constexpr double thumbnailPixelDensity = 2; // pixels per point

// Anything that exists at the path counts; if it is not a directory, writing into it fails with a message.
bool ensureDir(const QString& path) {
    if (QFileInfo::exists(path)) {
        return true;
    }
    if (const auto error = createDirectories(path)) {
        printLine(
            QStringLiteral("[ImageStorage] ERROR: Cannot create %1: %2").arg(path, error->description()));
        return false;
    }
    return true;
}

void saveThumbnail(const Image& image, const QString& path) {
    if (const auto thumbnail = makeThumbnail(image, thumbnailSide);
        thumbnail && !thumbnail->pngData().isEmpty()) {
        if (const auto error = writeFileAtomically(path, thumbnail->pngData())) {
            printLine(QStringLiteral("[ImageStorage] ERROR: Failed to write thumbnail: ") +
                      error->description());
        }
    } else {
        // The full-size image becomes the thumbnail; if that cannot be written either, there is none.
        writeFileAtomically(path, image.pngData());
    }
}

QString previewOf(const Image& image) {
    const QSize size = image.pixelSize();
    return size.isEmpty() ? QStringLiteral("Image")
                          : QStringLiteral("Image %1×%2").arg(size.width()).arg(size.height());
}

// Rounded up, to at least one pixel. What exceeds a whole number only by a floating-point error counts as
// that number.
int wholePixels(double length, int maximum) {
    return std::clamp(static_cast<int>(std::ceil(length - 1e-6)), 1, maximum);
}

} // namespace

std::optional<Image> imageFromPasteboard(const Pasteboard& pasteboard) {
    if (auto image = pasteboard.image()) {
        return image;
    }
    auto data = pasteboard.imageData(Pasteboard::ImageType::Tiff);
    if (!data) {
        data = pasteboard.imageData(Pasteboard::ImageType::Png);
    }
    if (!data) {
        return std::nullopt;
    }
    auto pixels = decodeImage(*data);
    return pixels ? std::optional(Image(*std::move(pixels))) : std::nullopt;
}

std::optional<SavedImage> saveImage(const Image& image, const QString& hash, const QString& imagesDir,
                                    const QString& thumbnailsDir) {
    if (!ensureDir(imagesDir) || !ensureDir(thumbnailsDir)) {
        printLine(u"[ImageStorage] ERROR: Failed to create image directories.");
        return std::nullopt;
    }
    const QByteArray& png = image.pngData();
    if (png.isEmpty()) {
        printLine(u"[ImageStorage] ERROR: Failed to get PNG data from image.");
        return std::nullopt;
    }
    const QString name = QStringLiteral("/%1.png").arg(hash);
    const QString imagePath = imagesDir + name;
    if (const auto error = writeFileAtomically(imagePath, png)) {
        printLine(u"[ImageStorage] ERROR: Failed to write original image.");
        printLine(QStringLiteral("  path: ") + imagePath);
        printLine(QFileInfo::exists(imagesDir) ? u"  parent exists: true" : u"  parent exists: false");
        printLine(QStringLiteral("  error: ") + error->description());
        return std::nullopt;
    }
    const QString thumbnailPath = thumbnailsDir + name;
    saveThumbnail(image, thumbnailPath);
    return SavedImage{imagePath, thumbnailPath, previewOf(image)};
}

std::optional<Image> makeThumbnail(const Image& image, double maxSide) {
    const QSizeF size = image.size();
    const QSize pixels = image.pixelSize();
    if (!(size.width() > 0) || !(size.height() > 0)) {
        return std::nullopt;
    }
    const double factor = std::min({maxSide / size.width(), maxSide / size.height(), 1.0});
    const double density = std::min(thumbnailPixelDensity, pixels.width() / (size.width() * factor));
    QImage thumbnail = image.pixels();
    const QSize thumbnailPixels(wholePixels(size.width() * factor * density, pixels.width()),
                                wholePixels(size.height() * factor * density, pixels.height()));
    if (thumbnailPixels != pixels) {
        // Keeps alpha and works on premultiplied colours, so that transparent edges get no fringes.
        thumbnail = thumbnail.scaled(thumbnailPixels, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
        if (thumbnail.isNull()) {
            return std::nullopt;
        }
    }
    thumbnail.setDevicePixelRatio(density);
    return Image(std::move(thumbnail));
}

} // namespace corvatto::ImageStorage
