#include "history/CardImages.h"

#include "platform/ImageDecoding.h"

#include <QFileInfo>

namespace corvatto {
namespace {

// About twenty cards at twice the usual density: what is in view, and some to either side.
constexpr qsizetype cacheBytes = 24 << 20;

QPixmap scaledToFill(const QImage& image, QSize pixels) {
    const QSize scaledSize = image.size().scaled(pixels, Qt::KeepAspectRatioByExpanding);
    const QImage scaled = scaledSize == image.size()
                              ? image
                              : image.scaled(scaledSize, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    const QPoint origin((scaled.width() - pixels.width()) / 2, (scaled.height() - pixels.height()) / 2);
    return QPixmap::fromImage(scaled.copy(QRect(origin, pixels)));
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
