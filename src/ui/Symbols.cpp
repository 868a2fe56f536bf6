#include "ui/Symbols.h"

#include <QFile>
#include <QHash>
#include <QPixmapCache>
#include <QSvgRenderer>

#include <memory>

namespace corvatto::symbols {
namespace {

// Symbols are drawn on a canvas that is this much taller than the text they stand beside.
constexpr double canvasPerPoint = 1.3;

QSvgRenderer* rendererFor(const QString& name) {
    static QHash<QString, std::shared_ptr<QSvgRenderer>> renderers;
    auto found = renderers.constFind(name);
    if (found == renderers.constEnd()) {
        auto renderer = std::make_shared<QSvgRenderer>(QStringLiteral(":/symbols/%1.svg").arg(name));
        found = renderers.insert(name, renderer->isValid() ? std::move(renderer) : nullptr);
    }
    return found->get();
}

} // namespace

QSizeF size(const QString& name, double pointSize) {
    const QSvgRenderer* renderer = rendererFor(name);
    if (renderer == nullptr) {
        return {};
    }
    const double side = pointSize * canvasPerPoint;
    const QSizeF canvas = renderer->viewBoxF().size();
    return {side * canvas.width() / canvas.height(), side};
}

QPixmap pixmap(const QString& name, double pointSize, const QColor& color, double devicePixelRatio) {
    QSvgRenderer* renderer = rendererFor(name);
    if (renderer == nullptr) {
        return {};
    }
    const QString key = QStringLiteral("symbol/%1/%2/%3/%4")
                            .arg(name, QString::number(pointSize), color.name(QColor::HexArgb),
                                 QString::number(devicePixelRatio));
    QPixmap drawn;
    if (QPixmapCache::find(key, &drawn)) {
        return drawn;
    }
    drawn = QPixmap((size(name, pointSize) * devicePixelRatio).toSize());
    drawn.fill(Qt::transparent);
    QPainter painter(&drawn);
    renderer->render(&painter);
    // The drawings are black; their coverage takes the colour.
    painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
    painter.fillRect(drawn.rect(), color);
    painter.end();
    drawn.setDevicePixelRatio(devicePixelRatio);
    QPixmapCache::insert(key, drawn);
    return drawn;
}

void draw(QPainter& painter, const QString& name, const QRectF& bounds, double pointSize,
          const QColor& color) {
    const double ratio = painter.device()->devicePixelRatioF();
    const QPixmap drawn = pixmap(name, pointSize, color, ratio);
    if (drawn.isNull()) {
        return;
    }
    const QSizeF extent = drawn.deviceIndependentSize();
    QPointF origin = bounds.center() - QPointF(extent.width() / 2, extent.height() / 2);
    // On whole device pixels, or the edges blur.
    origin = QPointF(qRound(origin.x() * ratio) / ratio, qRound(origin.y() * ratio) / ratio);
    painter.drawPixmap(origin, drawn);
}

} // namespace corvatto::symbols
