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
};

TEST_F(Excerpt, WhatFollowsTheLastLineIsAnEllipsis) {
    EXPECT_EQ(drawn(u"one\ntwo\n\tthree\nfour"_qs), drawn(u"one\ntwo\n\tthree…"_qs)) << "indented as ever";
    EXPECT_NE(drawn(u"one\ntwo\nthree"_qs), drawn(u"one\ntwo\nthree…"_qs));
    area.setHeight(40); // two lines and a bit
    EXPECT_EQ(drawn(u"one\ntwo\nthree"_qs), drawn(u"one\ntwo…"_qs));
}

TEST_F(Excerpt, LinesAreEvenlySpacedWhateverFontTheirCharactersNeed) {
    excerpt.maximumLines = 10;
    const QImage lines = drawn(u"b汉\nb\n"_qs.repeated(5));
    EXPECT_LT(test::share(lines, QRect(10, 10, 7, 15), Qt::white), 1.0);
    for (int line = 1; line < 9; ++line) {
        EXPECT_EQ(lines.copy(10, 10 + 16 * line, 7, 15), lines.copy(10, 10, 7, 15)) << line;
    }
}

TEST_F(Excerpt, BlankLinesThatFillTheAreaAreLeftOut) {
    EXPECT_EQ(drawn(u" \r\n"_qs.repeated(5000) + u'x'), drawn(u"x"_qs));
    EXPECT_NE(drawn(u"\n\r\nx"_qs), drawn(u"x"_qs));
}

TEST_F(Excerpt, NothingLeavesTheArea) {
    for (const QString& text : {QString(500, u'W'), QString(300, u'\t') + u'x',
                                QString(QChar(0x202E)) + QString(99, u'W')}) { // from right to left
        const QImage image = drawn(text);
        EXPECT_EQ(test::share(image, QRect(0, 0, 9, 220), Qt::white), 1.0);
        EXPECT_EQ(test::share(image, QRect(131, 0, 29, 220), Qt::white), 1.0);
    }
}

TEST_F(Excerpt, EveryKindOfLineEndEndsALineAndNulEndsNothing) {
    const QImage expected = drawn(u"a\nb\nc"_qs);
    for (const QString& text : {u"a\r\nb\rc"_qs, u"a\u2029b\u2028c"_qs, u"a\vb\u0085c"_qs, u"a\fb\nc"_qs}) {
        EXPECT_EQ(drawn(text), expected);
    }
    EXPECT_EQ(drawn(u"a\0b"_qs), drawn(u"a␀b"_qs));
}

} // namespace
} // namespace corvatto
