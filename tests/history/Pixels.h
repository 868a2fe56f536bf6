// Examines painted images.
#pragma once

#include <QImage>
#include <QRect>

namespace corvatto::test {

// The share, 0 to 1, of the pixels of `area` for which `predicate(color)` holds.
template <typename Predicate>
double shareWhere(const QImage& image, const QRect& area, Predicate predicate) {
    qint64 count = 0;
    for (int y = area.top(); y <= area.bottom(); ++y) {
        for (int x = area.left(); x <= area.right(); ++x) {
            count += predicate(image.pixelColor(x, y)) ? 1 : 0;
        }
    }
    return static_cast<double>(count) / (area.width() * area.height());
}

inline double share(const QImage& image, const QRect& area, const QColor& color) {
    // Opacities are rounded on their way.
    return shareWhere(image, area, [&color](const QColor& pixel) {
        return std::abs(pixel.red() - color.red()) <= 2 && std::abs(pixel.green() - color.green()) <= 2 &&
               std::abs(pixel.blue() - color.blue()) <= 2;
    });
}

} // namespace corvatto::test
