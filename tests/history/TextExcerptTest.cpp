#include "history/TextExcerpt.h"

#include "Pixels.h"
#include "ui/Appearance.h"

#include <QElapsedTimer>

#include <gtest/gtest.h>

namespace corvatto {
namespace {

class Excerpt : public ::testing::Test {
protected:
    TextExcerpt excerpt{appearance::monospacedSystemFont(12), Qt::black, 3, 2};
    QRectF area{10, 10, 120, 200};

    QImage drawn(const QString& text) const {
        QImage image(160, 220, QImage::Format_RGB32);
        image.fill(Qt::white);
        QPainter painter(&image);
        excerpt.draw(painter, area, text);
        return image;
    }
    QImage drawn(const char* text) const { return drawn(QString::fromUtf8(text)); }
};

TEST_F(Excerpt, WhatFollowsTheLastLineIsAnEllipsis) {
    EXPECT_EQ(drawn("one\ntwo\n\tthree\nfour"), drawn("one\ntwo\n\tthree…")) << "indented as ever";
    EXPECT_NE(drawn("one\ntwo\nthree"), drawn("one\ntwo\nthree…"));

    area.setHeight(40); // two lines and a bit
    EXPECT_EQ(drawn("one\ntwo\nthree"), drawn("one\ntwo…"));
}

TEST_F(Excerpt, LinesAreEvenlySpacedWhateverFontTheirCharactersNeed) {
    const auto second = [this](const char* text) {
        return drawn(text).copy(0, 26, 160, 40);
    };
    EXPECT_NE(second("a\nb\nc"), second("a\nx\nc"));
    EXPECT_EQ(second("a\nb\nc"), second("汉\nb\nc"));
    EXPECT_EQ(second("a\nb汉\nc").copy(0, 0, 17, 40), second("a\nb\nc").copy(0, 0, 17, 40));
}

TEST_F(Excerpt, NothingLeavesTheArea) {
    for (const QString& text : {QString(500, u'W'), QString(500, u'汉'), QStringLiteral("word ").repeated(99),
                                QString(300, u'\t') + u'x', QString(QChar(0x202E)) + QString(99, u'W')}) {
        const QImage image = drawn(text);
        EXPECT_EQ(test::share(image, QRect(0, 0, 9, 220), Qt::white), 1.0);
        EXPECT_EQ(test::share(image, QRect(131, 0, 29, 220), Qt::white), 1.0);
    }
}

TEST_F(Excerpt, EveryKindOfLineEndEndsALineAndNulEndsNothing) {
    const QImage expected = drawn("a\nb\nc");
    EXPECT_EQ(drawn("a\r\nb\rc"), expected);
    EXPECT_EQ(drawn("a\u2029b\u2028c"), expected);
    EXPECT_EQ(drawn(QStringLiteral("a") + QChar(u'\0') + QStringLiteral("b")), drawn("a␀b"));
}

TEST_F(Excerpt, OnlyTheBeginningOfALongTextIsLaidOut) {
    const QString beginning = QStringLiteral("long 文 ").repeated(500);
    const QString text = beginning.repeated(3000);
    ASSERT_GT(text.size(), 10'000'000);
    QElapsedTimer timer;
    timer.start();
    for (int i = 0; i < 20; ++i) {
        ASSERT_EQ(drawn(text), drawn(beginning + u'x'));
    }
    // Laying out all of it once takes longer, not to speak of the memory.
    EXPECT_LT(timer.elapsed(), 5000);
}

} // namespace
} // namespace corvatto
