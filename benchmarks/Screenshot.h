// Pictures as people copy them.
#pragma once

#include <QImage>
#include <QPainter>

#include <random>

namespace corvatto::bench {

// Like a screenshot of a desktop: flat areas, edges and lines of text-like noise. Each `number` gives another
// picture.
inline QImage screenshot(int number, QSize size = {3840, 2160}) {
    QImage image(size, QImage::Format_RGB32);
    QPainter painter(&image);
    std::mt19937 random(static_cast<unsigned>(number));
    const auto below = [&random](int bound) {
        return static_cast<int>(random() % static_cast<unsigned>(bound));
    };
    image.fill(qRgb(below(256), below(256), below(256)));
    for (int window = 0; window < 12; ++window) {
        const QRect frame(below(size.width()), below(size.height()), 600 + below(900), 400 + below(600));
        painter.fillRect(frame, QColor(below(256), below(256), below(256)));
        for (int y = frame.top() + 10; y < frame.bottom(); y += 22) {
            for (int x = frame.left() + 10; x < frame.right() - 8; x += 5 + below(9)) {
                painter.fillRect(x, y, 1 + below(4), 2 + below(12),
                                 QColor::fromHsv(below(360), 40, below(256)));
            }
        }
    }
    return image;
}

// Like a photograph: soft shades, and the noise of a sensor in each pixel. Compresses to about two thirds.
inline QImage photograph(int number, QSize size = {3840, 2160}) {
    QImage image(size, QImage::Format_RGB32);
    std::minstd_rand random(static_cast<unsigned>(number));
    for (int y = 0; y < size.height(); ++y) {
        auto* line = reinterpret_cast<QRgb*>(image.scanLine(y));
        for (int x = 0; x < size.width(); ++x) {
            const auto noise = static_cast<unsigned>(random());
            const auto shade = [&](int base, int shift) {
                return base + static_cast<int>(noise >> shift & 15);
            };
            line[x] = qRgb(shade(x / 17 % 230, 3), shade(y / 11 % 230, 9), shade((x + y) / 29 % 230, 15));
        }
    }
    return image;
}

} // namespace corvatto::bench
