#include "base/Image.h"
#include "base/ImageDecoding.h"
#include "base/PngEncoding.h"

#include <QBuffer>
#include <QColorSpace>
#include <QImageWriter>
#include <QTemporaryFile>

#include <gtest/gtest.h>

namespace corvatto {
namespace {

// Pixels that differ from their neighbours in every channel.
QImage sample(QSize size, QImage::Format format, bool transparent) {
    QImage image(size, QImage::Format_RGBA64);
    for (int y = 0; y < size.height(); ++y) {
        for (int x = 0; x < size.width(); ++x) {
            const auto level = static_cast<quint64>(x * 7919 + y * 104729) * 0x0005'0003'000B'0001;
            reinterpret_cast<QRgba64*>(image.scanLine(y))[x] =
                QRgba64::fromRgba64(transparent ? level : level | 0xFFFF'0000'0000'0000);
        }
    }
    return image.convertToFormat(format);
}

QByteArray encode(const QImage& image, const char* format, bool isProgressive = false) {
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    QImageWriter writer(&buffer, format);
    writer.setProgressiveScanWrite(isProgressive);
    EXPECT_TRUE(writer.write(image)) << format;
    return bytes;
}

TEST(ImageCodec, PngKeepsEveryPixelTheColourProfileAndTheResolution) {
    for (const auto format :
         {QImage::Format_RGB32, QImage::Format_ARGB32, QImage::Format_RGBA64, QImage::Format_Grayscale8,
          QImage::Format_Grayscale16, QImage::Format_Indexed8}) {
        const QImage image = sample({641, 7}, format, format != QImage::Format_Indexed8);
        const auto decoded = decodeImage(encodePng(image));
        ASSERT_TRUE(decoded) << format;
        EXPECT_EQ(decoded->convertToFormat(QImage::Format_RGBA64),
                  image.convertToFormat(QImage::Format_RGBA64))
            << format;
    }
    QImage wide = sample({8, 8}, QImage::Format_RGB32, false);
    wide.setColorSpace(QColorSpace(QColorSpace::DisplayP3));
    EXPECT_EQ(decodeImage(encodePng(wide))->colorSpace().primaries(), QColorSpace::Primaries::DciP3D65);
    wide.setDotsPerMeterX(11811); // 300 dpi
    wide.setDotsPerMeterY(23622);
    const QImage printed = *decodeImage(encodePng(*decodeImage(Image(wide).tiffData())));
    EXPECT_EQ(QSize(printed.dotsPerMeterX(), printed.dotsPerMeterY()), QSize(11811, 23622));
    EXPECT_FALSE(encodePng(QImage(8, 8, QImage::Format_RGB32)).contains("pHYs"));
    EXPECT_TRUE(encodePng(QImage()).isEmpty() && Image(QImage()).tiffData().isEmpty());
}

TEST(ImageCodec, EqualPixelsEncodeEquallyWhateverHeldThem) {
    const QImage opaque = sample({33, 17}, QImage::Format_RGB32, false);
    const QByteArray png = encodePng(opaque);
    for (const auto format : {QImage::Format_ARGB32_Premultiplied, QImage::Format_RGB888}) {
        EXPECT_EQ(encodePng(opaque.convertToFormat(format)), png) << format;
    }
    EXPECT_EQ(encodePng(*decodeImage(png)), png);
    EXPECT_EQ(encodePng(*decodeImage(Image(opaque).tiffData())), png);
    QImage changed = opaque.convertToFormat(QImage::Format_ARGB32);
    changed.setPixel(32, 16, qRgba(0, 0, 0, 254));
    EXPECT_TRUE(decodeImage(encodePng(changed))->hasAlphaChannel());
}

TEST(ImageCodec, RefusesWhatIsCutShort) {
    const QImage image = sample({300, 200}, QImage::Format_RGB32, false);
    QImage old(100, 50, QImage::Format_Mono);
    old.fill(1);
    for (const QByteArray& bytes : {encodePng(image), encode(image, "jpeg"), encode(image, "bmp"),
                                    encode(old, "bmp"), encode(image, "webp"), Image(image).tiffData()}) {
        EXPECT_TRUE(decodeImage(bytes)) << bytes.first(4).toHex().constData();
        for (const qsizetype length : {qsizetype{3}, bytes.size() / 2, bytes.size() - 20}) {
            EXPECT_FALSE(decodeImage(bytes.first(length))) << bytes.first(4).toHex().constData();
        }
    }
    // A marker of the end in the headers, as thumbnails have one, is not the end.
    QByteArray jpeg = encode(image, "jpeg");
    jpeg.insert(2, QByteArray("\xFF\xE1\0\x06\xFF\xD9\xFF\xD9", 8));
    EXPECT_TRUE(decodeImage(jpeg));
    EXPECT_FALSE(decodeImage(jpeg.chopped(2)));
}

TEST(ImageCodec, APngIsWholeWhenNoBitOfItIsWrong) {
    const QByteArray png = encodePng(sample({30, 20}, QImage::Format_RGB32, false));
    EXPECT_TRUE(isWholePng(png) && isWholePng(png + "what follows"));
    for (qsizetype at = 0; at < png.size(); ++at) {
        QByteArray damaged = png;
        damaged[at] = static_cast<char>(damaged[at] ^ 1);
        EXPECT_FALSE(isWholePng(damaged) || isWholePng(png.first(at))) << at;
    }
}

TEST(ImageCodec, APngFileIsPassedOnWithoutDecodingIt) {
    // Its checksums hold, and its pixels cannot be decoded.
    const QByteArray png = QByteArray::fromHex("89504e470d0a1a0a"
                                               "0000000d4948445200000001000000010802000000907753de"
                                               "00000001494441547876e684e6"
                                               "0000000049454e44ae426082");
    QTemporaryFile file;
    ASSERT_TRUE(file.open() && file.write(png) > 0);
    file.flush();
    EXPECT_EQ(Image::fromFile(file.fileName())->pngData(), png);
    EXPECT_TRUE(Image::fromFile(file.fileName())->pixels().isNull());
}

TEST(ImageCodec, RefusesWhatNobodyCopies) {
    const QImage image = sample({8, 8}, QImage::Format_RGB32, false);
    for (const QByteArray& bytes :
         {QByteArray(), QByteArray("BM"), QByteArray("\xFF\xD8"),
          QByteArray("<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"9\" height=\"9\"/>"),
          encode(image, "xpm"), encode(image, "ico")}) {
        EXPECT_FALSE(looksDecodable(bytes) || decodeImage(bytes)) << bytes.constData();
    }
}

TEST(ImageCodec, RefusesSmallDataThatAreCostlyButNoScreenshot) {
    QImage largest(7680, 4320, QImage::Format_RGB32);
    largest.fill(Qt::darkCyan);
    EXPECT_TRUE(decodeImage(encodePng(largest)));

    QByteArray jpeg = encode(sample({8, 8}, QImage::Format_RGB32, false), "jpeg", true);
    jpeg.chop(2);
    const QByteArray scan = jpeg.sliced(jpeg.lastIndexOf("\xFF\xDA"));
    EXPECT_TRUE(decodeImage(jpeg + scan.repeated(10) + "\xFF\xD9"));
    EXPECT_FALSE(decodeImage(jpeg + scan.repeated(100) + "\xFF\xD9"));

    // Of a PNG the width and height, and the checksum over the header that holds them.
    QByteArray png = encodePng(sample({4, 4}, QImage::Format_RGB32, false));
    png.replace(16, 17, QByteArray::fromHex("00009c4000009c400802000000de6e9952"));
    EXPECT_FALSE(looksDecodable(png) || decodeImage(png));

    QByteArray bmp = encode(sample({4, 4}, QImage::Format_RGB32, false), "bmp");
    bmp.replace(18, 8, "\xFF\xFF\xFF\x7F\xFF\xFF\xFF\x7F"); // width and height
    EXPECT_FALSE(decodeImage(bmp));
}

TEST(ImageCodec, FilesDecodeSmallerButCoverTheTarget) {
    QTemporaryFile file;
    ASSERT_TRUE(file.open() &&
                file.write(encode(sample({2000, 1000}, QImage::Format_RGB32, false), "jpeg")) > 0);
    file.flush();
    EXPECT_EQ(decodeImageFile(file.fileName())->size(), QSize(2000, 1000));
    const QSize small = decodeImageFile(file.fileName(), {100, 80})->size();
    EXPECT_TRUE(small.width() < 2000 && small.width() >= 100 && small.height() >= 80) << small.width();
    EXPECT_FALSE(decodeImageFile(file.fileName() + u'x'));
}

} // namespace
} // namespace corvatto
