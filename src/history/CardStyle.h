// The shapes that cards are made of: corners of continuous curvature, borders inside them, the shadow below.
#pragma once

#include <QColor>
#include <QPainter>
#include <QPainterPath>

namespace corvatto {

// A rectangle whose corners begin to bend earlier than a circle's quarter would, so that the curvature grows
// from zero instead of jumping. All lengths in points.
QPainterPath continuousRoundedRect(const QRectF& rect, double radius);

// Strokes a border of `width` that lies inside the rounded rectangle.
void strokeInside(QPainter& painter, const QRectF& rect, double radius, double width, const QColor& color);

// A soft shadow of the rounded rectangle, blurred by `blur` and moved by `offset`.
void drawShadow(QPainter& painter, const QRectF& rect, double radius, double blur, QPointF offset,
                const QColor& color);

} // namespace corvatto
