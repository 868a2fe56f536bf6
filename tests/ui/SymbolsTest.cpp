#include "ui/Symbols.h"

#include <QBitmap>
#include <QImage>
#include <QSet>

#include <gtest/gtest.h>

namespace corvatto {
namespace {

TEST(Symbols, EveryNameThatTheProgramUsesIsADrawingOfItsOwn) {
    const double ratio = 1.5;
    const QColor color(200, 30, 30);
    QSet<QList<QRgb>> drawings;
    for (const char* utf8 : {"photo.fill", "doc.fill", "questionmark", "doc", "photo", "magnifyingglass",
                             "exclamationmark.triangle.fill", "xmark.circle.fill", "doc.on.clipboard"}) {
        const QString name = QString::fromUtf8(utf8);
        const QImage drawn = symbols::pixmap(name, 11, color, ratio).toImage();
        ASSERT_EQ(drawn.size(), (symbols::size(name, 11) * ratio).toSize()) << utf8;
        const auto* pixels = reinterpret_cast<const QRgb*>(drawn.constBits());
        const QList<QRgb> drawing(pixels, pixels + drawn.width() * drawn.height());
        EXPECT_TRUE(drawing.contains(color.rgba()) && drawing.contains(0)) << utf8;
        if (drawings.size() < 3) { // stands in a badge, whose padding is even only if the drawing has none
            const QRect ink = QRegion(QBitmap::fromImage(drawn.createAlphaMask())).boundingRect();
            EXPECT_LE(ink.left(), ratio) << utf8;
            EXPECT_GE(ink.right(), drawn.width() - 1 - ratio) << utf8;
        }
        drawings.insert(drawing);
    }
    EXPECT_EQ(drawings.size(), 9);
}

} // namespace
} // namespace corvatto
