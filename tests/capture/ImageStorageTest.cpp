#include "capture/ImageStorage.h"

#include "support/CapturedOutput.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <limits>

namespace corvatto {
namespace {

// Left half opaque red, right half transparent.
QImage halves(int width, int height, double density = 1) {
    QImage image(width, height, QImage::Format_ARGB32);
    image.fill(Qt::transparent);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width / 2; ++x) {
            image.setPixel(x, y, qRgba(255, 0, 0, 255));
        }
    }
    image.setDevicePixelRatio(density);
    return image;
}

TEST(ImageStorage, ThumbnailsFitIn360PointsAndAreNeverEnlarged) {
    struct Case {
        QSize size;
        double density;
        QSizeF points;
        QSize pixels;
    };
    for (const Case& image :
         {Case{{1000, 500}, 1, {360, 180}, {720, 360}}, Case{{200, 100}, 1, {200, 100}, {200, 100}},
          // On a dense display points are fewer than pixels.
          Case{{400, 200}, 2, {200, 100}, {400, 200}}, Case{{1000, 2000}, 2, {180, 360}, {360, 720}},
          // No pixels are invented: 360 points of 540 pixels have one and a half each.
          Case{{540, 300}, 1, {360, 200}, {540, 300}},
          // 119.88 points high, 239.76 pixels: rounded up.
          Case{{1000, 333}, 1, {360, 120}, {720, 240}}, Case{{20000, 3}, 1, {360, 0.5}, {720, 1}}}) {
        const auto thumbnail = ImageStorage::makeThumbnail(
            Image(halves(image.size.width(), image.size.height(), image.density)), 360);
        ASSERT_TRUE(thumbnail);
        EXPECT_EQ(thumbnail->size(), image.points) << image.size.width();
        EXPECT_EQ(thumbnail->pixelSize(), image.pixels) << image.size.width();
    }
    EXPECT_FALSE(ImageStorage::makeThumbnail(Image(QImage()), 360));
}

TEST(ImageStorage, ThumbnailsKeepColourAndTransparency) {
    const auto thumbnail = ImageStorage::makeThumbnail(Image(halves(2001, 1001)), 360);
    const QImage pixels = thumbnail->pixels();
    EXPECT_EQ(pixels.pixelColor(10, 180), QColor(255, 0, 0));
    EXPECT_EQ(pixels.pixelColor(710, 180).alpha(), 0);
    const QColor edge = pixels.pixelColor(359, 180); // covered in part: paler, never darker
    EXPECT_TRUE(edge.alpha() > 0 && edge.alpha() < 255 && edge.red() >= 250)
        << edge.name(QColor::HexArgb).toStdString();
}

class SavingImages : public ::testing::Test {
protected:
    QTemporaryDir home;
    const QString images = home.path() + QStringLiteral("/Corvatto/images");
    const QString thumbnails = home.path() + QStringLiteral("/Corvatto/thumbnails");
    test::CapturedOutput output;

    auto save(const QImage& pixels) const {
        return ImageStorage::saveImage(Image(pixels), QStringLiteral("hash"), images, thumbnails);
    }
    static void touch(const QString& path) { ASSERT_TRUE(QFile(path).open(QIODevice::WriteOnly)); }
};

TEST_F(SavingImages, StandsInWithTheFullSizeWhereNoThumbnailComesOut) {
    const auto saved = save(halves(9, 9, std::numeric_limits<double>::infinity()));
    ASSERT_TRUE(saved);
    EXPECT_EQ(QImage(saved->thumbnailPath).size(), QSize(9, 9));
}

TEST_F(SavingImages, FailuresArePrintedAndOnlyAThumbnailMayBeMissing) {
    const QString corvatto = home.path() + QStringLiteral("/Corvatto");
    EXPECT_FALSE(save(QImage()));
    ASSERT_TRUE(QDir().rmdir(thumbnails));
    touch(thumbnails); // counts as the directory
    EXPECT_TRUE(save(halves(2, 2)));
    ASSERT_TRUE(QDir(images).removeRecursively());
    touch(images);
    EXPECT_FALSE(save(halves(2, 2)));
    ASSERT_TRUE(QDir(corvatto).removeRecursively());
    touch(corvatto);
    EXPECT_FALSE(save(halves(2, 2)));
    const QString lines = QStringLiteral("[ImageStorage] ERROR: Failed to get PNG data from image.\n"
                                         "[ImageStorage] ERROR: Failed to write thumbnail: %3%2/hash.png)\n"
                                         "[ImageStorage] ERROR: Failed to write original image.\n"
                                         "  path: %1/hash.png\n"
                                         "  parent exists: true\n"
                                         "  error: %3%1/hash.png)\n"
                                         "[ImageStorage] ERROR: Cannot create %1: %3%1)\n"
                                         "[ImageStorage] ERROR: Failed to create image directories.\n");
    EXPECT_EQ(output.text(),
              lines.arg(images, thumbnails, QStringLiteral("Not a directory (code 20, path ")).toUtf8());
}

} // namespace
} // namespace corvatto
