// The beginning of a text, broken into lines for a small area.
#pragma once

#include <QColor>
#include <QFont>
#include <QPainter>
#include <QString>

namespace corvatto {

// Draws the beginning of `text` from the top left of `area` (points): as many lines as fit, `maximumLines` at
// most, `lineSpacing` points apart. The last line ends in an ellipsis when more follows. The cost depends on
// the area and not on the length of the text.
struct TextExcerpt {
    QFont font;
    QColor color;
    int maximumLines;
    double lineSpacing;
    Qt::Alignment alignment = Qt::AlignLeft;

    // Returns the height that the lines take.
    double draw(QPainter& painter, const QRectF& area, const QString& text) const;

    // The same height without drawing.
    double height(const QRectF& area, const QString& text) const;

private:
    double layOut(QPainter* painter, const QRectF& area, const QString& text) const;
};

} // namespace corvatto
