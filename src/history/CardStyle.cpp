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

namespace {

// Draws what `draw` paints around `rect`, up to `margin` outside it, from a picture that all cards share.
// Filling so large a shape with smooth edges anew for each card costs more than drawing all of its text.
template <typename Draw>
void drawShared(QPainter& painter, const QRectF& rect, double margin, const QString& name, Draw draw) {
    const double ratio = painter.device()->devicePixelRatioF();
    const QString key =
        QStringLiteral("card/%1/%2/%3/%4").arg(name).arg(rect.width()).arg(rect.height()).arg(ratio);
    QPixmap picture;
    if (!QPixmapCache::find(key, &picture)) {
        picture = QPixmap(((rect.size() + 2 * QSizeF(margin, margin)) * ratio).toSize());
        picture.setDevicePixelRatio(ratio);
        picture.fill(Qt::transparent);
        QPainter inside(&picture);
        inside.setRenderHint(QPainter::Antialiasing);
        draw(inside, QRectF(QPointF(margin, margin), rect.size()));
        inside.end();
        QPixmapCache::insert(key, picture);
    }
    const QPainter::RenderHints hints = painter.renderHints();
    painter.setRenderHints(hints, false);
    painter.drawPixmap(rect.topLeft() - QPointF(margin, margin), picture);
    painter.setRenderHints(hints);
}

// A soft shadow of the rounded rectangle, blurred by `blur` and moved by `offset`.
void drawShadow(QPainter& painter, const QRectF& rect, double radius, double blur, QPointF offset,
                const QColor& color) {
    // Approximates a Gaussian edge by shapes from wide to narrow, each of which adds a share of the opacity.
    painter.setPen(Qt::NoPen);
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
        // Each layer covers a share of what the layers below it still let through.
        const double full = color.alphaF();
        layer.setAlphaF(static_cast<float>((wanted - reached) * full / (1 - reached * full)));
        painter.setBrush(layer);
        const QRectF shape = rect.translated(offset).adjusted(-spread, -spread, spread, spread);
        painter.drawPath(continuousRoundedRect(shape, std::max(0.0, radius + spread)));
        reached = wanted;
    }
}

} // namespace

void drawCardGround(QPainter& painter, const QRectF& rect, double radius) {
    constexpr double blur = 3;
    constexpr QPointF offset(0, 1);
    drawShared(painter, rect, blur + offset.y(), QStringLiteral("ground/%1").arg(radius),
               [&](QPainter& inside, const QRectF& card) {
                   drawShadow(inside, card, radius, blur, offset, QColor(0, 0, 0, 18));
                   inside.fillPath(continuousRoundedRect(card, radius), Qt::white);
               });
}

void drawCardBorder(QPainter& painter, const QRectF& rect, double radius, double width, const QColor& color) {
    const QString name =
        QStringLiteral("border/%1/%2/%3").arg(radius).arg(width).arg(color.name(QColor::HexArgb));
    drawShared(painter, rect, 0, name, [&](QPainter& inside, const QRectF& card) {
        const double inset = width / 2;
        inside.setPen(QPen(color, width));
        inside.drawPath(continuousRoundedRect(card.adjusted(inset, inset, -inset, -inset), radius - inset));
    });
}

} // namespace corvatto
