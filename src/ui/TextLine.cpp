#include "ui/TextLine.h"

#include <QFontMetricsF>

#include <cmath>

namespace corvatto::textline {

double height(const QFont& font) {
    return std::round(font.pixelSize() * 1.2);
}

double ascent(const QFont& font) {
    constexpr double middlePerSize = 0.36; // above the baseline: half of a capital's height
    return height(font) / 2 + font.pixelSize() * middlePerSize;
}

double baseline(const QRectF& area, const QFont& font) {
    return area.center().y() - height(font) / 2 + ascent(font);
}

double onPixel(const QPainter& painter, double y) {
    const QTransform toDevice = painter.deviceTransform();
    return (std::round(y * toDevice.m22() + toDevice.dy()) - toDevice.dy()) / toDevice.m22();
}

void draw(QPainter& painter, const QRectF& area, const QString& text, Qt::Alignment horizontal) {
    drawOnBaseline(painter, area, baseline(area, painter.font()), text, horizontal);
}

void drawOnBaseline(QPainter& painter, const QRectF& area, double baseline, const QString& text,
                    Qt::Alignment horizontal) {
    double x = area.left();
    if (!horizontal.testFlag(Qt::AlignLeft)) {
        const double slack = area.width() - QFontMetricsF(painter.font()).horizontalAdvance(text);
        x += horizontal.testFlag(Qt::AlignRight) ? slack : slack / 2;
    }
    painter.drawText(QPointF(x, onPixel(painter, baseline)), text);
}

} // namespace corvatto::textline
