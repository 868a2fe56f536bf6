#include "platform/Symbols.h"

#include <QImage>
#include <QSet>

#include <gtest/gtest.h>

namespace corvatto {
namespace {

TEST(Symbols, EveryNameThatTheProgramUsesIsADrawingOfItsOwn) {
    const QColor color(200, 30, 30);
    for (const double ratio : {1.0, 1.5, 2.0}) {
        QSet<QByteArray> drawings;
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
            ASSERT_FALSE(drawn.isNull()) << utf8;
            int solid = 0;
            int empty = 0;
            for (int y = 0; y < drawn.height(); ++y) {
                for (int x = 0; x < drawn.width(); ++x) {
                    const QColor pixel = drawn.pixelColor(x, y);
                    solid += pixel == color ? 1 : 0;
                    empty += pixel.alpha() == 0 ? 1 : 0;
                }
            }
            EXPECT_GT(solid, 0) << utf8 << " has strokes of full strength";
            EXPECT_GT(empty, 0) << utf8;
            drawings.insert(
                QByteArray(reinterpret_cast<const char*>(drawn.constBits()), drawn.sizeInBytes()));
        }
        EXPECT_EQ(drawings.size(), 9) << ratio;
    }
    EXPECT_TRUE(symbols::pixmap(QStringLiteral("none"), 11, color, 1).isNull());
    EXPECT_TRUE(symbols::size(QStringLiteral("none"), 11).isEmpty());
}

} // namespace
} // namespace corvatto
