#include "history/HistoryCardView.h"

#include "Pixels.h"
#include "history/CardImages.h"
#include "history/CharacterCounts.h"
#include "platform/Appearance.h"
#include "support/FakeRelativeTimes.h"
#include "support/Printing.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace corvatto {
namespace {

using test::share;
using test::shareWhere;

constexpr QRgb backdrop = 0xFFE5E5E5;

class Card : public ::testing::Test {
protected:
    QTemporaryDir home;
    CardImages images;
    CharacterCounts counts;
    test::FakeRelativeTimes relativeTimes;
    ClipboardItem item = of("text", "content");

    static ClipboardItem of(const char* type, const QString& content) {
        ClipboardItem item;
        item.contentType = QString::fromUtf8(type);
        item.content = content;
        item.preview = QStringLiteral("preview");
        item.copyCount = 1;
        item.lastCopiedAt = QDateTime::fromSecsSinceEpoch(1'700'000'000);
        return item;
    }
    static ClipboardItem of(const char* type, const char* content) {
        return of(type, QString::fromUtf8(content));
    }
    static HistoryCardView card(const ClipboardItem& item) { return {item, false, 0}; }

    QString path(const char* name) const { return home.path() + u'/' + QString::fromUtf8(name); }
    // A picture that is blue but for the middle third of its longer side.
    QString paint(const char* name, QSize size, const QColor& middle) const {
        QImage picture(size, QImage::Format_RGB32);
        picture.fill(Qt::blue);
        const int third = std::max(size.width(), size.height()) / 3;
        QPainter(&picture).fillRect(size.width() > size.height() ? QRect(third, 0, third, size.height())
                                                                 : QRect(0, third, size.width(), third),
                                    middle);
        EXPECT_TRUE(picture.save(path(name)));
        return path(name);
    }

    // The card in points from (10, 10) on, on the panel's grey.
    QImage drawn(bool isSelected = false, double ratio = 1, double height = 320) {
        QImage image((QSizeF(340, 340) * ratio).toSize(), QImage::Format_RGB32);
        image.setDevicePixelRatio(ratio);
        image.fill(backdrop);
        QPainter painter(&image);
        const CardContext context{images, counts, relativeTimes, item.lastCopiedAt.addSecs(90)};
        HistoryCardView(item, isSelected, 0).paint(painter, QRectF(10, 10, 320, height), context);
        return image;
    }
};

// The body band without the borders at its sides, in the whole pixels that lie inside it.
QRect band(double ratio = 1) {
    const auto up = [ratio](double points) {
        return static_cast<int>(std::ceil(points * ratio));
    };
    const auto down = [ratio](double points) {
        return static_cast<int>(std::floor(points * ratio));
    };
    return {QPoint(up(13), up(54)), QPoint(down(327) - 1, down(284) - 1)};
}

TEST_F(Card, TheTypeDecidesTitleColourAndIcon) {
    struct Case {
        const char *type, *content, *title;
        QColor color;
        const char* icon;
    };
    using namespace appearance;
    for (const Case& expected : {Case{"text", "/a.png", "Text", accentColor(), ""},
                                 Case{"image", "", "Image", purple(), "photo.fill"},
                                 Case{"file", "/a/gone.PNG", "Image File", purple(), "photo.fill"},
                                 Case{"file", "\n/a.heic\n\n", "Image File", purple(), "photo.fill"},
                                 Case{"file", "/a.png\n/b.png", "File", orange(), "doc.fill"},
                                 Case{"file", "/a.png/b", "File", orange(), "doc.fill"},
                                 Case{"file", "", "File", orange(), "doc.fill"},
                                 Case{"rtf", "/a.png", "Rtf", gray(), "questionmark"},
                                 Case{"Text", "x", "Text", gray(), "questionmark"},
                                 Case{"RICH text", "x", "Rich Text", gray(), "questionmark"}}) {
        item = of(expected.type, expected.content);
        EXPECT_EQ(card(item).typeTitle(), QString::fromUtf8(expected.title)) << expected.content;
        EXPECT_EQ(card(item).typeColor(), expected.color) << expected.content;
        EXPECT_EQ(card(item).typeIcon(), QString::fromUtf8(expected.icon)) << expected.content;
        // Inside the badge, left of what is written in it.
        EXPECT_EQ(share(drawn(), QRect(28, 30, 3, 4), expected.color), 1.0) << expected.title;
    }
    for (const char* name : {"/a/b.JpEg", "/a.b.tif", "/.svg", "c.raw", "/a/b.webp", "/x.psd"}) {
        EXPECT_TRUE(HistoryCardView::isImageFile(QString::fromUtf8(name))) << name;
    }
    for (const char* name : {"/a/png", "/a/b.", "/a.png/b", "/a.pngx", "/a.png ", "", "/a.pdf"}) {
        EXPECT_FALSE(HistoryCardView::isImageFile(QString::fromUtf8(name))) << name;
    }
}

TEST_F(Card, FiguresCountWhatUsersSee) {
    const auto size = [this](const char* type, const QString& content) {
        item = of(type, content);
        return card(item).sizeText(counts);
    };
    EXPECT_EQ(size("text", QStringLiteral("e\u0301")), u"1 个字");
    EXPECT_EQ(size("text", QString()), u"0 个字");
    EXPECT_EQ(size("image", QStringLiteral("/图/a.png")), u"8 个字") << "of the path";
    EXPECT_EQ(size("file", QStringLiteral("/a\n\n/b\n")), u"2 个文件");
    EXPECT_EQ(size("text", QStringLiteral("👨‍👩‍👧").repeated(12345)), u"12345 个字")
        << "no grouping";
    item.content = QString(600, u'x');
    EXPECT_EQ(card(item).sizeText(counts), u"12345 个字") << "a long text of an id is counted once";

    EXPECT_EQ(HistoryCardView(item, false, 0).shortcutText(), u"⌘ + 1 直接复制");
    EXPECT_EQ(HistoryCardView(item, false, 8).shortcutText(), u"⌘ + 9 直接复制");
    EXPECT_EQ(HistoryCardView(item, false, 9).shortcutText(), QString());
}

TEST_F(Card, BordersAndBandsHaveTheirWidths) {
    for (const double ratio : {1.0, 1.5, 2.0}) {
        const auto pixels = [ratio](double points) {
            return qRound(points * ratio);
        };
        const QRect edge(pixels(10), pixels(170), static_cast<int>(3 * ratio), 1);
        const QRect inside(band(ratio).left(), pixels(170), pixels(10), 1);
        const QImage selected = drawn(true, ratio);
        EXPECT_EQ(share(selected, edge, appearance::accentColor()), 1.0) << ratio;
        EXPECT_EQ(share(selected, inside, Qt::white), 1.0) << ratio;
        const QImage unselected = drawn(false, ratio);
        const QColor gray20(232, 232, 233); // gray at a fifth on white
        EXPECT_EQ(share(unselected, {edge.topLeft(), QSize(1, 1)}, gray20), 1.0) << ratio;
        EXPECT_EQ(share(unselected, {QPoint(pixels(11.5), edge.top()), QSize(pixels(10), 1)}, Qt::white), 1.0)
            << ratio;
        // The corner is round, and the shadow falls downwards.
        EXPECT_EQ(share(unselected, QRect(pixels(10), pixels(10), 2, 2), Qt::white), 0.0);
        const auto below = unselected.pixelColor(pixels(170), pixels(331));
        const auto above = unselected.pixelColor(pixels(170), pixels(9) - 1);
        EXPECT_LT(below.red(), above.red());
        EXPECT_LE(above.red(), qRed(backdrop));
    }
}

TEST_F(Card, APictureFillsTheBandAndIsCroppedToIt) {
    const QColor green(0, 200, 0);
    struct Case {
        const char* name;
        QSize size;
    };
    // Wide, high, small, larger than both, and the thinnest, which scaled to the band's width would be
    // 6.4 million pixels high.
    for (const Case& picture :
         {Case{"wide.png", {1500, 200}}, Case{"high.bmp", {200, 1500}}, Case{"small.png", {30, 5}},
          Case{"large.jpg", {4000, 700}}, Case{"thin.png", {1, 20'000}}}) {
        paint(picture.name, picture.size, green);
        for (const double ratio : {1.0, 1.5, 2.0}) {
            item = of("file", path(picture.name));
            const QRect inner = band(ratio);
            const QImage image = drawn(true, ratio);
            const QString what = QStringLiteral("%1 at %2").arg(QString::fromUtf8(picture.name)).arg(ratio);
            // All of the middle third's green, save what a smooth enlargement mixes in at its edges.
            EXPECT_GT(shareWhere(image, inner, [](const QColor& pixel) { return pixel.green() > 100; }), 0.95)
                << what.toStdString();
            EXPECT_EQ(share(image, inner, Qt::white), 0.0) << what.toStdString();
            EXPECT_EQ(share(image, QRect(inner.left(), inner.top() - 3, inner.width(), 3), Qt::white), 1.0);
            EXPECT_EQ(share(image, QRect(inner.left(), inner.bottom() + 1, inner.width(), 3), Qt::white),
                      1.0);
        }
    }
}

TEST_F(Card, TheThumbnailComesFirstAndWhatCannotBeShownHasASymbolAndItsPreview) {
    item = of("image", "/full.png");
    EXPECT_EQ(card(item).imagePath(), u"/full.png");
    item.thumbnailPath = QString();
    EXPECT_EQ(card(item).imagePath(), u"/full.png");
    item.content.clear();
    EXPECT_EQ(card(item).imagePath(), std::nullopt);

    const auto isGreen = [](const QColor& pixel) {
        return pixel.green() > pixel.red() + 50;
    };
    paint("thumbnail.png", {300, 300}, Qt::green);
    item = of("image", path("full.png"));
    item.thumbnailPath = path("thumbnail.png");
    EXPECT_GT(shareWhere(drawn(), band(), isGreen), 0.3);

    // The same path no longer holds it: the picture was not kept beyond its file.
    QFile broken(path("thumbnail.png"));
    ASSERT_TRUE(broken.open(QIODevice::WriteOnly) && broken.write("\x89PNG\r\n") > 0);
    broken.close();
    const QImage placeholder = drawn();
    EXPECT_EQ(shareWhere(placeholder, band(), isGreen), 0.0);
    EXPECT_GT(share(placeholder, band(), QColor(0xD7, 0xA8, 0xEE)), 0.001) << "purple at half";
    item.preview = QStringLiteral("another");
    EXPECT_NE(drawn(), placeholder);

    item = of("file", "/gone.png");
    EXPECT_GT(share(drawn(), band(), QColor(0xFF, 0xB5, 0x4C)), 0.001) << "orange at 0.7";
    item = of("file", home.path()); // a directory
    EXPECT_GT(share(drawn(), band(), QColor(0xFF, 0xB5, 0x4C)), 0.001);
}

TEST_F(Card, TextIsCutToTheBandAndALowCardKeepsHeaderAndFooter) {
    item = of("text", QStringLiteral("line\n").repeated(40));
    const QImage whole = drawn();
    const auto isInk = [](const QColor& pixel) {
        return pixel.lightness() < 200;
    };
    for (const QRect& padding :
         {QRect(13, 54, 10, 230), QRect(307, 54, 20, 230), QRect(13, 54, 300, 8), QRect(13, 276, 300, 8)}) {
        EXPECT_EQ(shareWhere(whole, padding, isInk), 0.0);
    }
    EXPECT_GT(shareWhere(whole, QRect(24, 250, 100, 26), isInk), 0.02) << "down to the last line that fits";
    const auto footer = [&](const QImage& image, int bottom) {
        return image.copy(13, bottom - 40, 314, 35);
    };
    EXPECT_EQ(footer(drawn(false, 1, 280), 290), footer(whole, 330));
    EXPECT_EQ(drawn(false, 1, 280).copy(20, 13, 300, 40), whole.copy(20, 13, 300, 40));

    const QImage before = drawn();
    item.sourceApp = QStringLiteral("Editor");
    EXPECT_NE(drawn().copy(200, 20, 120, 30), before.copy(200, 20, 120, 30));
    EXPECT_EQ(share(before, QRect(200, 20, 120, 30), Qt::white), 1.0) << "no source, nothing there";
    item.copyCount = 2;
    EXPECT_NE(footer(drawn(), 330), footer(whole, 330));
}

} // namespace
} // namespace corvatto
