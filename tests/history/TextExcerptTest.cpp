#include "history/TextExcerpt.h"

#include "Pixels.h"
#include "ui/Appearance.h"

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
    excerpt.maximumLines = 10;
    const QImage lines = drawn(QStringLiteral("b汉\nb\n").repeated(5));
    EXPECT_LT(test::share(lines, QRect(10, 10, 7, 15), Qt::white), 1.0);
    for (int line = 1; line < 9; ++line) {
        EXPECT_EQ(lines.copy(10, 10 + 16 * line, 7, 15), lines.copy(10, 10, 7, 15)) << line;
    }
}

TEST_F(Excerpt, BlankLinesThatFillTheAreaAreLeftOut) {
    EXPECT_EQ(drawn(QStringLiteral(" \r\n").repeated(5000) + u'x'), drawn("x"));
    EXPECT_NE(drawn("\n\r\nx"), drawn("x"));
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
    EXPECT_EQ(drawn("a\vb\u0085c"), expected);
    EXPECT_EQ(drawn("a\fb\nc"), expected);
    EXPECT_EQ(drawn(QStringLiteral("a") + QChar(u'\0') + QStringLiteral("b")), drawn("a␀b"));
}

} // namespace
} // namespace corvatto
