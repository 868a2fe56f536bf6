#include "capture/ImageStorage.h"

#include "platform/PngEncoding.h"
#include "support/CapturedOutput.h"
#include "support/FakePasteboard.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <limits>

namespace corvatto {
namespace {

using test::CapturedOutput;

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

struct Thumbnail {
    double width; // points
    double height;
    QSize pixels;
    bool operator==(const Thumbnail&) const = default;
};

std::ostream& operator<<(std::ostream& out, const Thumbnail& t) {
    return out << t.width << "x" << t.height << " points, " << t.pixels.width() << "x" << t.pixels.height()
               << " pixels";
}

Thumbnail thumbnailOf(int width, int height, double density = 1) {
    const auto thumbnail = ImageStorage::makeThumbnail(Image(halves(width, height, density)), 360);
    return {thumbnail->size().width(), thumbnail->size().height(), thumbnail->pixelSize()};
}

TEST(ImageStorage, ThumbnailsFitIn360PointsAndAreNeverEnlarged) {
    EXPECT_EQ(thumbnailOf(1000, 500), (Thumbnail{360, 180, {720, 360}}));
    EXPECT_EQ(thumbnailOf(500, 1000).height, 360);
    EXPECT_EQ(thumbnailOf(500, 1000).pixels, QSize(360, 720));
    EXPECT_EQ(thumbnailOf(200, 100), (Thumbnail{200, 100, {200, 100}}));
    // On a dense display points are fewer than pixels.
    EXPECT_EQ(thumbnailOf(400, 200, 2), (Thumbnail{200, 100, {400, 200}}));
    EXPECT_EQ(thumbnailOf(2000, 1000, 2), (Thumbnail{360, 180, {720, 360}}));
    // No pixels are invented: 360 points of a 540-pixel image have one and a half each.
    EXPECT_EQ(thumbnailOf(540, 300), (Thumbnail{360, 200, {540, 300}}));
    // 119.88 points high, 239.76 pixels: rounded up.
    EXPECT_EQ(thumbnailOf(1000, 333), (Thumbnail{360, 120, {720, 240}}));
    EXPECT_EQ(thumbnailOf(20000, 3).pixels, QSize(720, 1));
    EXPECT_FALSE(ImageStorage::makeThumbnail(Image(QImage()), 360));
    EXPECT_FALSE(
        ImageStorage::makeThumbnail(Image(halves(9, 9, std::numeric_limits<double>::infinity())), 360));
}

TEST(ImageStorage, ThumbnailsKeepColourAndTransparency) {
    const auto thumbnail = ImageStorage::makeThumbnail(Image(halves(2001, 1001)), 360);
    const QImage pixels = thumbnail->pixels();
    EXPECT_EQ(pixels.pixelColor(10, 180), QColor(255, 0, 0));
    EXPECT_EQ(pixels.pixelColor(710, 180).alpha(), 0);
    const QColor edge = pixels.pixelColor(360, 180); // half covered at most: paler, never darker
    EXPECT_TRUE(edge.alpha() < 255 && (edge.alpha() == 0 || edge.red() >= 250)) << edge.name().toStdString();
}

TEST(ImageStorage, ReadsTheImageElseTiffElsePng) {
    test::FakePasteboard pasteboard;
    const auto widthRead = [&pasteboard] {
        const auto image = ImageStorage::imageFromPasteboard(pasteboard);
        return image ? image->pixelSize().width() : 0;
    };
    EXPECT_EQ(widthRead(), 0);
    pasteboard.content.png = encodePng(halves(30, 1));
    EXPECT_EQ(widthRead(), 30);
    pasteboard.content.tiff = Image(halves(20, 1)).tiffData();
    EXPECT_EQ(widthRead(), 20);
    pasteboard.content.image = Image(halves(10, 1));
    EXPECT_EQ(widthRead(), 10);

    pasteboard.content = {};
    pasteboard.content.png = encodePng(halves(300, 300)).chopped(40);
    EXPECT_EQ(widthRead(), 0) << "half an image";
}

class SavingImages : public ::testing::Test {
protected:
    QTemporaryDir home;
    const QString images = home.path() + QStringLiteral("/Corvatto/images");
    const QString thumbnails = home.path() + QStringLiteral("/Corvatto/thumbnails");
    CapturedOutput output;

    auto save(const QImage& pixels) const {
        return ImageStorage::saveImage(Image(pixels), QStringLiteral("hash"), images, thumbnails);
    }
    static void touch(const QString& path) { ASSERT_TRUE(QFile(path).open(QIODevice::WriteOnly)); }
};

TEST_F(SavingImages, WritesBothFilesUnderTheHashEachTime) {
    const QImage original = halves(1920, 1080);
    for (int round = 0; round < 2; ++round) {
        const auto saved = save(original);
        ASSERT_TRUE(saved);
        EXPECT_EQ(saved->imagePath, images + QStringLiteral("/hash.png"));
        EXPECT_EQ(saved->thumbnailPath, thumbnails + QStringLiteral("/hash.png"));
        EXPECT_EQ(saved->preview, QStringLiteral("Image 1920\u00D71080"));
        EXPECT_EQ(QImage(saved->imagePath).convertToFormat(QImage::Format_ARGB32), original);
        EXPECT_EQ(QImage(saved->thumbnailPath).size(), QSize(720, 405));
        EXPECT_EQ(QDir(images).entryList(QDir::Files), QStringList(QStringLiteral("hash.png")));
    }
    EXPECT_EQ(output.text(), "");
}

TEST_F(SavingImages, StandsInWithTheFullSizeWhereNoThumbnailComesOut) {
    const auto saved = save(halves(9, 9, std::numeric_limits<double>::infinity()));
    ASSERT_TRUE(saved);
    QFile image(saved->imagePath);
    QFile thumbnail(saved->thumbnailPath);
    ASSERT_TRUE(image.open(QIODevice::ReadOnly) && thumbnail.open(QIODevice::ReadOnly));
    EXPECT_EQ(thumbnail.readAll(), image.readAll());
}

TEST_F(SavingImages, ReportsDirectoriesThatCannotBeMade) {
    touch(home.path() + QStringLiteral("/Corvatto"));
    EXPECT_FALSE(save(halves(2, 2)));
    const QList<QByteArray> lines = output.text().split('\n');
    ASSERT_EQ(lines.size(), 3);
    const QByteArray cause = "[ImageStorage] ERROR: Cannot create " + images.toUtf8() + ": Not a directory";
    EXPECT_TRUE(lines[0].startsWith(cause)) << lines[0].toStdString();
    EXPECT_EQ(lines[1], "[ImageStorage] ERROR: Failed to create image directories.");
}

TEST_F(SavingImages, ReportsAWriteThatFailsInFourLines) {
    QDir().mkpath(home.path() + QStringLiteral("/Corvatto"));
    touch(images); // counts as the directory
    EXPECT_FALSE(save(halves(2, 2)));
    const QList<QByteArray> lines = output.text().split('\n');
    ASSERT_EQ(lines.size(), 5);
    EXPECT_EQ(lines[0], "[ImageStorage] ERROR: Failed to write original image.");
    EXPECT_EQ(lines[1], "  path: " + images.toUtf8() + "/hash.png");
    EXPECT_EQ(lines[2], "  parent exists: true");
    EXPECT_TRUE(lines[3].startsWith("  error: Not a directory")) << lines[3].toStdString();
    EXPECT_FALSE(QFileInfo::exists(thumbnails + QStringLiteral("/hash.png")));
}

TEST_F(SavingImages, CarriesOnWithoutTheThumbnailFile) {
    QDir().mkpath(images);
    touch(thumbnails);
    const auto saved = save(halves(2, 2));
    ASSERT_TRUE(saved);
    EXPECT_EQ(saved->thumbnailPath, thumbnails + QStringLiteral("/hash.png"));
    EXPECT_TRUE(output.text().startsWith("[ImageStorage] ERROR: Failed to write thumbnail: Not a directory"))
        << output.text().toStdString();
    EXPECT_EQ(output.text().count('\n'), 1);
}

TEST_F(SavingImages, RefusesAnImageWithoutPixels) {
    EXPECT_FALSE(save(QImage()));
    EXPECT_EQ(output.text(), "[ImageStorage] ERROR: Failed to get PNG data from image.\n");
}

} // namespace
} // namespace corvatto
