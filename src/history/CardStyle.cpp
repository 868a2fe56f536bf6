#include "history/CardStyle.h"

#include <QPixmapCache>

#include <algorithm>
#include <array>
#include <cmath>

namespace corvatto {

namespace {

// How far from its corner a rounded rectangle begins to bend.
constexpr double reachPerRadius = 1.2818;

} // namespace

QPainterPath continuousRoundedRect(const QRectF& rect, double radius) {
    // Each corner is one cubic from `reach` before the corner to `reach` behind it; `pull` puts its middle
    // where the middle of a circular corner of that radius would be.
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

// Where a picture and what is drawn of it are cut, in device pixels. Of the picture, the middle part is one
// pixel, which is stretched.
struct Cuts {
    std::array<int, 4> picture, drawn;
};

// `length` is that of the rounded rectangle and `corner` how much of each end is not straight, both in
// points.
Cuts cuts(double length, double corner, double margin, double ratio) {
    const int saved = std::max(0, static_cast<int>((length - 2 * corner) * ratio) - 2);
    const int drawn = static_cast<int>(std::lround((length + 2 * margin) * ratio));
    const int picture = drawn - saved;
    const int middle = picture / 2;
    return {{0, middle, middle + 1, picture}, {0, middle, middle + 1 + saved, drawn}};
}

// Draws what `draw` paints around the rounded rectangle, up to `margin` outside it, from a picture that all
// cards share. Filling so large a shape with smooth edges anew for each card costs more than drawing all of
// its text. The picture holds the corners and a pixel of what is straight between them.
template <typename Draw>
void drawShared(QPainter& painter, const QRectF& rect, double radius, double margin, const QString& name,
                Draw draw) {
    const double ratio = painter.device()->devicePixelRatioF();
    const double corner = reachPerRadius * (radius + margin);
    const Cuts x = cuts(rect.width(), corner, margin, ratio);
    const Cuts y = cuts(rect.height(), corner, margin, ratio);
    const QSizeF saved(x.drawn[3] - x.picture[3], y.drawn[3] - y.picture[3]);
    const QSizeF size = rect.size() - saved / ratio;
    const QString key =
        QStringLiteral("card/%1/%2/%3/%4").arg(name).arg(size.width()).arg(size.height()).arg(ratio);
    QPixmap picture;
    if (!QPixmapCache::find(key, &picture)) {
        picture = QPixmap(x.picture[3], y.picture[3]);
        picture.setDevicePixelRatio(ratio);
        picture.fill(Qt::transparent);
        QPainter inside(&picture);
        inside.setRenderHint(QPainter::Antialiasing);
        draw(inside, QRectF(QPointF(margin, margin), size));
        inside.end();
        QPixmapCache::insert(key, picture);
    }
    const QPainter::RenderHints hints = painter.renderHints();
    painter.setRenderHints(hints, false);
    const QPointF origin = rect.topLeft() - QPointF(margin, margin);
    for (std::size_t row = 0; row < 3; ++row) {
        for (std::size_t column = 0; column < 3; ++column) {
            const auto piece = [&](const std::array<int, 4>& xs, const std::array<int, 4>& ys) {
                return QRect(QPoint(xs[column], ys[row]), QPoint(xs[column + 1] - 1, ys[row + 1] - 1));
            };
            const QRect target = piece(x.drawn, y.drawn);
            painter.drawPixmap(
                QRectF(origin + QPointF(target.topLeft()) / ratio, QSizeF(target.size()) / ratio), picture,
                QRectF(piece(x.picture, y.picture)));
        }
    }
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
    drawShared(painter, rect, radius, blur + offset.y(), QStringLiteral("ground/%1").arg(radius),
               [&](QPainter& inside, const QRectF& card) {
                   drawShadow(inside, card, radius, blur, offset, QColor(0, 0, 0, 18));
                   inside.fillPath(continuousRoundedRect(card, radius), Qt::white);
               });
}

void drawCardBorder(QPainter& painter, const QRectF& rect, double radius, double width, const QColor& color) {
    const QString name =
        QStringLiteral("border/%1/%2/%3").arg(radius).arg(width).arg(color.name(QColor::HexArgb));
    drawShared(painter, rect, radius, 0, name, [&](QPainter& inside, const QRectF& card) {
        const double inset = width / 2;
        inside.setPen(QPen(color, width));
        inside.drawPath(continuousRoundedRect(card.adjusted(inset, inset, -inset, -inset), radius - inset));
    });
}

} // namespace corvatto
