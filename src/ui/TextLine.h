// The height of a line of text, and its baseline.
//
// Qt gives a line the height of the tallest font that any of its characters comes from. With a Latin system
// font, whose missing Chinese characters come from another, lines of one size would differ in height and
// baseline, and be cut where they are drawn into a box of the system font's height. Here both follow from the
// size of the font alone. All lengths in points.
#pragma once

#include <QFont>
#include <QPainter>
#include <QRectF>
#include <QString>

namespace corvatto::textline {

// Whole points. Characters of any script fit, apart from marks stacked on them.
double height(const QFont& font);

// From the top of a line to its baseline. The middle of capitals and of Chinese characters is the line's.
double ascent(const QFont& font);

// The baseline of a line in the vertical middle of `area`.
double baseline(const QRectF& area, const QFont& font);

// `y` on the nearest whole pixel of the painter's device, so that equal distances stay equal.
double onPixel(const QPainter& painter, double y);

// Draws one line in the painter's font, in the middle of `area` or with its baseline at `baseline`. Text
// wider than the area goes beyond it.
void draw(QPainter& painter, const QRectF& area, const QString& text,
          Qt::Alignment horizontal = Qt::AlignLeft);
void drawOnBaseline(QPainter& painter, const QRectF& area, double baseline, const QString& text,
                    Qt::Alignment horizontal = Qt::AlignLeft);

} // namespace corvatto::textline
