#include "history/CardStyle.h"

#include <QPixmapCache>

#include <algorithm>
#include <array>
#include <cmath>

namespace corvatto {

QPainterPath continuousRoundedRect(const QRectF& rect, double radius) {
    // Each corner is one cubic from `reach` before the corner to `reach` behind it; `pull` puts its middle
    // where the middle of a circular corner of that radius would be.
    constexpr double reachPerRadius = 1.2818;
    constexpr double middlePerRadius = 1.0 - 0.70710678;
    const double reach = std::min({radius * reachPerRadius, rect.width() / 2, rect.height() / 2});
    const double pull = std::max(0.0, (8 * middlePerRadius * radius - reach) / 3);
    const auto [left, top, right, bottom] = std::array{rect.left(), rect.top(), rect.right(), rect.bottom()};

    QPainterPath path(QPointF(left + reach, top));
    path.lineTo(right - reach, top);
    path.cubicTo(right - pull, top, right, top + pull, right, top + reach);
    path.lineTo(right, bottom - reach);
    path.cubicTo(right, bottom - pull, right - pull, bottom, right - reach, bottom);
    path.lineTo(left + reach, bottom);
    path.cubicTo(left + pull, bottom, left, bottom - pull, left, bottom - reach);
    path.lineTo(left, top + reach);
    path.cubicTo(left, top + pull, left + pull, top, left + reach, top);
    path.closeSubpath();
    return path;
}

void strokeInside(QPainter& painter, const QRectF& rect, double radius, double width, const QColor& color) {
    const double inset = width / 2;
    painter.setPen(QPen(color, width));
    painter.setBrush(Qt::NoBrush);
    painter.drawPath(continuousRoundedRect(rect.adjusted(inset, inset, -inset, -inset), radius - inset));
}

void drawShadow(QPainter& painter, const QRectF& rect, double radius, double blur, QPointF offset,
                const QColor& color) {
    // A Gaussian edge, as a stack of shapes from wide to narrow of which each adds its share of the opacity.
    // All cards share one drawing of it.
    const double ratio = painter.device()->devicePixelRatioF();
    const QString key = QStringLiteral("shadow/%1/%2/%3/%4/%5/%6")
                            .arg(rect.width())
                            .arg(rect.height())
                            .arg(radius)
                            .arg(blur)
                            .arg(color.name(QColor::HexArgb))
                            .arg(ratio);
    const QPointF margin(blur, blur);
    QPixmap shadow;
    if (!QPixmapCache::find(key, &shadow)) {
        const QSizeF size = rect.size() + QSizeF(2 * blur, 2 * blur);
        shadow = QPixmap((size * ratio).toSize());
        shadow.setDevicePixelRatio(ratio);
        shadow.fill(Qt::transparent);
        QPainter layers(&shadow);
        layers.setRenderHint(QPainter::Antialiasing);
        layers.setPen(Qt::NoPen);
        const double sigma = blur / 2;
        const auto covered = [&](double distance) {
            return 0.5 * std::erfc(distance / (sigma * std::sqrt(2.0)));
        };
        constexpr int steps = 12;
        double reached = 0; // opacity so far, as a share of the colour's
        for (int step = 0; step < steps; ++step) {
            const double spread = blur - 2 * blur * step / (steps - 1);
            const double wanted = covered(spread);
            QColor layer = color;
            // Layers add up as coverage does: what is missing, out of what still shines through.
            const double full = color.alphaF();
            layer.setAlphaF(static_cast<float>((wanted - reached) * full / (1 - reached * full)));
            layers.setBrush(layer);
            const QRectF shape = QRectF(margin, rect.size()).adjusted(-spread, -spread, spread, spread);
            layers.drawPath(continuousRoundedRect(shape, std::max(0.0, radius + spread)));
            reached = wanted;
        }
        layers.end();
        QPixmapCache::insert(key, shadow);
    }
    painter.drawPixmap(rect.topLeft() - margin + offset, shadow);
}

} // namespace corvatto
