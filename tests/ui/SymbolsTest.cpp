#include "ui/Symbols.h"

#include <QBitmap>
#include <QImage>
#include <QSet>

#include <gtest/gtest.h>

namespace corvatto {
namespace {

TEST(Symbols, EveryNameThatTheProgramUsesIsADrawingOfItsOwn) {
    const QColor color(200, 30, 30);
    for (const double ratio : {1.0, 1.5, 2.0}) {
        QSet<QList<QRgb>> drawings;
        for (const auto& [utf8, size] : {std::pair{"photo.fill", 11},
                                         {"doc.fill", 11},
                                         {"questionmark", 11},
                                         {"doc", 30},
                                         {"photo", 30},
                                         {"magnifyingglass", 13},
                                         {"exclamationmark.triangle.fill", 48},
                                         {"xmark.circle.fill", 13},
                                         {"doc.on.clipboard", 34}}) {
            const QString name = QString::fromUtf8(utf8);
            const QImage drawn = symbols::pixmap(name, size, color, ratio).toImage();
            ASSERT_EQ(drawn.size(), (symbols::size(name, size) * ratio).toSize()) << utf8;
            const auto* pixels = reinterpret_cast<const QRgb*>(drawn.constBits());
            const QList<QRgb> drawing(pixels, pixels + drawn.width() * drawn.height());
            EXPECT_TRUE(drawing.contains(color.rgba()) && drawing.contains(0)) << utf8;
            if (size == 11) { // stands in a badge, whose padding is even only if the drawing has none
                const QRect ink = QRegion(QBitmap::fromImage(drawn.createAlphaMask())).boundingRect();
                EXPECT_LE(ink.left(), ratio) << utf8;
                EXPECT_GE(ink.right(), drawn.width() - 1 - ratio) << utf8;
            }
            drawings.insert(drawing);
        }
        EXPECT_EQ(drawings.size(), 9) << ratio;
    }
}

} // namespace
} // namespace corvatto
