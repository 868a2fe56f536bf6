// The shapes that cards are made of: corners of continuous curvature, borders inside them, the shadow below.
#pragma once

#include <QColor>
#include <QPainter>
#include <QPainterPath>

namespace corvatto {

// A rectangle whose corners begin to bend earlier than a circle's quarter would, so that the curvature grows
// from zero instead of jumping. All lengths in points.
QPainterPath continuousRoundedRect(const QRectF& rect, double radius);

// The white ground of a card, with a soft shadow around it.
void drawCardGround(QPainter& painter, const QRectF& rect, double radius);

// A border of `width` that lies inside the rounded rectangle.
void drawCardBorder(QPainter& painter, const QRectF& rect, double radius, double width, const QColor& color);

} // namespace corvatto
