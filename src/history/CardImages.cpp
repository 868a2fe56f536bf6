#include "history/CardImages.h"

#include "base/ImageDecoding.h"

#include <QFileInfo>

#include <algorithm>

namespace corvatto {
namespace {

// About twenty cards at a device pixel ratio of 2: those in view and some on either side.
constexpr qsizetype cacheBytes = 24 << 20;

QPixmap scaledToFill(const QImage& image, QSize pixels) {
    const QSizeF size = image.size();
    const double scale = std::max(pixels.width() / size.width(), pixels.height() / size.height());
    // Only what will be seen is scaled, in whole pixels of the image: all of a very long and thin one would
    // be gigabytes.
    const QSizeF seenSize = QSizeF(pixels) / scale;
    const QRectF seen(QPointF((size.width() - seenSize.width()) / 2, (size.height() - seenSize.height()) / 2),
                      seenSize);
    const QRect part = seen.toAlignedRect() & image.rect();
    const QSize partSize = (QSizeF(part.size()) * scale).toSize().expandedTo(pixels);
    const QImage cropped = part == image.rect() ? image : image.copy(part);
    const QImage scaled = cropped.scaled(partSize, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    const QPoint origin = ((seen.topLeft() - part.topLeft()) * scale).toPoint();
    const QPoint most(partSize.width() - pixels.width(), partSize.height() - pixels.height());
    return QPixmap::fromImage(
        scaled.copy(QRect({std::min(origin.x(), most.x()), std::min(origin.y(), most.y())}, pixels)));
}

} // namespace

CardImages::CardImages() : m_pictures(cacheBytes) {}

QPixmap CardImages::filling(const QString& path, QSizeF size, double devicePixelRatio) {
    const QFileInfo file(path);
    if (!file.isFile()) {
        return {};
    }
    const QSize pixels = (size * devicePixelRatio).toSize();
    const QString key = QStringLiteral("%1x%2 %3")
                            .arg(QString::number(pixels.width()), QString::number(pixels.height()), path);
    if (const Picture* known = m_pictures.object(key);
        known != nullptr && known->modified == file.lastModified() && known->bytes == file.size()) {
        return known->pixmap;
    }
    QPixmap pixmap;
    if (const auto image = decodeImageFile(path, pixels)) {
        pixmap = scaledToFill(*image, pixels);
        pixmap.setDevicePixelRatio(devicePixelRatio);
    }
    const qsizetype cost = qsizetype{4} * pixmap.width() * pixmap.height() + 1024;
    m_pictures.insert(key, new Picture{file.lastModified(), file.size(), pixmap}, cost);
    return pixmap;
}

} // namespace corvatto
