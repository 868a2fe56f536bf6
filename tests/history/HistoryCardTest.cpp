#include "history/HistoryCardView.h"

#include "Pixels.h"
#include "history/CardImages.h"
#include "history/CharacterCounts.h"
#include "support/Eventually.h"
#include "support/FakeRelativeTimes.h"
#include "support/Printing.h"
#include "ui/Appearance.h"

#include <QFile>
#include <QFontMetricsF>
#include <QTemporaryDir>
#include <QThread>

#include <gtest/gtest.h>

namespace corvatto {
namespace {

using namespace appearance;
using test::share;
using test::shareWhere;

class Card : public ::testing::Test {
protected:
    QTemporaryDir home;
    CardImages images;
    CharacterCounts counts;
    test::FakeRelativeTimes relativeTimes;
    ClipboardItem item;

    static ClipboardItem of(const char* type, const QString& content) {
        ClipboardItem item;
        item.contentType = QString::fromUtf8(type);
        item.content = content;
        item.preview = QStringLiteral("preview");
        item.copyCount = 1;
        item.lastCopiedAt = QDateTime::fromSecsSinceEpoch(1'700'000'000);
        return item;
    }
    // A picture that is blue but for the middle third of its longer side.
    QString paint(const char* name, QSize size, const QColor& middle) const {
        QImage thirds(size.width() > size.height() ? QSize(3, 1) : QSize(1, 3), QImage::Format_RGB32);
        thirds.fill(Qt::blue);
        thirds.setPixelColor(thirds.rect().center(), middle);
        const QString path = home.filePath(QString::fromUtf8(name));
        EXPECT_TRUE(thirds.scaled(size).save(path));
        return path;
    }

    static QImage ground(double ratio) {
        QImage image((QSizeF(340, 340) * ratio).toSize(), QImage::Format_RGB32);
        image.setDevicePixelRatio(ratio);
        image.fill(Qt::white);
        return image;
    }
    // The card in points from (10, 10) on.
    QImage drawn(double ratio = 1, double height = 320) {
        QImage image = ground(ratio);
        QPainter painter(&image);
        const CardContext context{images, counts, relativeTimes, item.lastCopiedAt.addSecs(90)};
        HistoryCardView(item, false, 0).paint(painter, QRectF(10, 10, 320, height), context);
        return image;
    }
};

TEST_F(Card, TheTypeDecidesTitleAndColour) {
    for (const auto& [type, content, title, color] :
         {std::tuple("text", u"/a.png"_qs, u"Text"_qs, accentColor()),
          {"image", {}, u"Image"_qs, purple()},
          {"file", u"\n/a.b.PNG\n\n"_qs, u"Image File"_qs, purple()},
          {"file", u"/a.png\n/b.png"_qs, u"File"_qs, orange()},
          {"file", u"/a.png/png"_qs, u"File"_qs, orange()},
          {"RICH text", u"/a.png"_qs, u"Rich Text"_qs, gray()}}) {
        item = of(type, content);
        EXPECT_EQ(HistoryCardView(item, false, 0).typeTitle(), title);
        // Inside the badge, left of what is written in it.
        EXPECT_EQ(share(drawn(), QRect(28, 30, 3, 4), color), 1.0) << title.toStdString();
    }
}

TEST_F(Card, FiguresCountWhatUsersSee) {
    const auto size = [this](const char* type, const QString& content) {
        item = of(type, content);
        return HistoryCardView(item, false, 0).sizeText(counts);
    };
    EXPECT_EQ(size("image", QStringLiteral("/图/e\u0301.png")), u"8 个字") << "of the path";
    EXPECT_EQ(size("file", QStringLiteral("/a\n\n/b\n")), u"2 个文件");
    EXPECT_EQ(size("text", QStringLiteral("👨‍👩‍👧").repeated(12345)), u"12345 个字");
    EXPECT_EQ(size("text", QString(600, u'x')), u"12345 个字") << "a long text of an id is counted once";
    const QString text(20'000, u'x');
    const QThread* loadedOn = nullptr;
    item.id = 7;
    item.content = ItemContent(text.left(ItemContent::minimumPrefix), [&] {
        loadedOn = QThread::currentThread();
        return std::optional(text);
    });
    const auto sizeOfItem = [this] {
        return HistoryCardView(item, false, 0).sizeText(counts);
    };
    int counted = 0;
    QObject::connect(&counts, &CharacterCounts::counted, &counts, [&counted] { ++counted; });
    EXPECT_EQ(sizeOfItem(), u"… 个字");
    EXPECT_EQ(sizeOfItem(), u"… 个字");
    EXPECT_TRUE(test::eventually([&] { return counted > 0; }));
    EXPECT_EQ(sizeOfItem(), u"20000 个字");
    EXPECT_EQ(counted, 1);
    EXPECT_NE(loadedOn, QThread::currentThread());
    EXPECT_EQ(HistoryCardView(item, false, 8).shortcutText(), u"⌘ + 9 直接复制");
    EXPECT_EQ(HistoryCardView(item, false, 9).shortcutText(), QString());
}

TEST_F(Card, TheFooterIsWholeAndItsSecondLineHasOneBaseline) {
    item = of("text", QStringLiteral("字"));
    for (const double ratio : {1.0, 1.5, 2.0}) {
        const QImage image = drawn(ratio);
        QSet<int> offsets; // from where the texts are drawn here to where the card has them
        double x = 24;
        for (const QString& text : QStringLiteral("1 个字|·|1 次复制|⌘ + 1 直接复制").split(u'|')) {
            const bool isHint = text.contains(u'+');
            const QFont font = isHint ? monospacedSystemFont(11, QFont::Medium) : systemFont(11);
            const double width = QFontMetricsF(font).horizontalAdvance(text);
            x = isHint ? 316 - width : x;
            QImage alone = ground(ratio);
            QPainter painter(&alone);
            painter.setFont(font);
            painter.setPen(isHint ? Qt::black : secondaryLabelColor());
            painter.drawText(QPointF(x, 100), text);
            const QRect place = QRectF(x * ratio, 90 * ratio, width * ratio, 13 * ratio).toRect();
            int offset = 0;
            while (offset < 227 * ratio && image.copy(place.translated(0, offset)) != alone.copy(place)) {
                ++offset;
            }
            offsets << offset;
            x += width + 6;
        }
        EXPECT_EQ(offsets.size(), 1) << ratio;
        EXPECT_LT(*offsets.begin(), 227 * ratio) << "not cut";
    }
}

TEST_F(Card, APictureFillsTheBandAndIsCroppedToIt) {
    // The thinnest, scaled to the band's width, would be 6.4 million pixels high.
    for (const auto& [name, size] : {std::pair("wide.png", QSize(1500, 200)),
                                     {"small.bmp", {5, 30}},
                                     {"large.jpg", {4000, 700}},
                                     {"thin.png", {1, 20'000}}}) {
        item = of("file", paint(name, size, QColor(0, 200, 0)));
        for (const double ratio : {1.0, 1.5}) {
            const QImage image = drawn(ratio);
            // The band without the borders at its sides, in the whole pixels that lie inside it.
            const QRect inner(QPoint(static_cast<int>(std::ceil(11 * ratio)), static_cast<int>(54 * ratio)),
                              QPoint(static_cast<int>(329 * ratio) - 1, static_cast<int>(284 * ratio) - 1));
            // All of the middle third's green, save what a smooth enlargement mixes in at its edges.
            EXPECT_GT(shareWhere(image, inner, [](const QColor& pixel) { return pixel.green() > 100; }), 0.95)
                << name << ratio;
            EXPECT_EQ(share(image, inner, Qt::white), 0.0) << name << ratio;
            for (const int beside : {inner.top() - 3, inner.bottom() + 1}) {
                EXPECT_EQ(share(image, QRect(inner.left(), beside, inner.width(), 3), Qt::white), 1.0);
            }
        }
    }
}

TEST_F(Card, TheThumbnailComesFirstAndWhatCannotBeShownHasASymbolAndItsPreview) {
    const QRect band(13, 54, 314, 230);
    item = of("image", paint("full.png", {300, 300}, Qt::blue));
    item.thumbnailPath = paint("thumbnail.png", {300, 300}, Qt::green);
    EXPECT_GT(share(drawn(), band, Qt::green), 0.3);
    item.thumbnailPath = QString();
    EXPECT_EQ(share(drawn(), band, Qt::blue), 1.0);

    // The same path no longer holds it: the picture was not kept beyond its file.
    QFile broken(item.content.prefix());
    ASSERT_TRUE(broken.open(QIODevice::WriteOnly) && broken.write("\x89PNG\r\n") > 0 && broken.flush());
    const QImage placeholder = drawn();
    EXPECT_GT(share(placeholder, band, QColor(0xD7, 0xA8, 0xEE)), 0.001) << "purple at half";
    item.preview = QStringLiteral("another");
    EXPECT_NE(drawn(), placeholder);
    item = of("file", QStringLiteral("/gone.png"));
    EXPECT_GT(share(drawn(), band, QColor(0xFF, 0xB5, 0x4C)), 0.001) << "orange at 0.7";
    const auto isDark = [](const QColor& pixel) {
        return pixel.value() < 120;
    };
    EXPECT_GT(shareWhere(drawn(1, 146), QRect(24, 54, 292, 56), isDark), 0.003) << "its name only";
}

TEST_F(Card, TextIsCutToTheBandAndALowCardKeepsHeaderAndFooter) {
    item = of("text", QStringLiteral("line\n").repeated(40));
    const QImage whole = drawn();
    for (const QRect& padding : {QRect(13, 54, 10, 230), QRect(13, 54, 300, 8), QRect(13, 276, 300, 8)}) {
        EXPECT_EQ(share(whole, padding, Qt::white), 1.0);
    }
    EXPECT_LT(share(whole, QRect(24, 250, 100, 26), Qt::white), 0.98) << "down to the last line that fits";
    const QImage low = drawn(1, 280);
    EXPECT_EQ(low.copy(13, 250, 314, 35), whole.copy(13, 290, 314, 35));
    EXPECT_EQ(low.copy(20, 13, 300, 40), whole.copy(20, 13, 300, 40));

    EXPECT_EQ(share(whole, QRect(200, 20, 120, 30), Qt::white), 1.0) << "no source, nothing there";
    item.sourceApp = QStringLiteral("Editor");
    EXPECT_LT(share(drawn(), QRect(200, 20, 120, 30), Qt::white), 1.0);
}

} // namespace
} // namespace corvatto
