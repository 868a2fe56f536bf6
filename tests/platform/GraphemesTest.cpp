#include "platform/Graphemes.h"

#include <QString>
#include <QStringList>

#include <gtest/gtest.h>
#include <unicode/brkiter.h>
#include <unicode/unistr.h>

#include <random>

namespace corvatto {
namespace {

// The boundaries that ICU finds when it walks the whole text by itself.
QList<qsizetype> boundariesByIcu(const QString& text) {
    UErrorCode status = U_ZERO_ERROR;
    const std::unique_ptr<icu::BreakIterator> breaks(
        icu::BreakIterator::createCharacterInstance(icu::Locale::getRoot(), status));
    const icu::UnicodeString copy(false, reinterpret_cast<const UChar*>(text.utf16()),
                                  static_cast<std::int32_t>(text.size()));
    breaks->setText(copy);
    QList<qsizetype> boundaries;
    for (int at = breaks->first(); at != icu::BreakIterator::DONE; at = breaks->next()) {
        boundaries << at;
    }
    return boundaries;
}

TEST(Graphemes, CountsWhatPeopleSeeAsOneCharacter) {
    const QStringList ones{QStringLiteral("a"),
                           QStringLiteral("文"),
                           QStringLiteral("e\u0301\u0323"),
                           QStringLiteral("\r\n"),
                           QStringLiteral("\U0001F600"),
                           QStringLiteral("\U0001F44D\U0001F3FD"),
                           QStringLiteral("\u1112\u1161\u11AB"),
                           QStringLiteral("\U0001F1E8\U0001F1F3"),
                           QStringLiteral("\U0001F468\u200D\U0001F469\u200D\U0001F467"),
                           QStringLiteral("\u2764\uFE0F"),
                           QStringLiteral("1\uFE0F\u20E3"),
                           QStringLiteral("か\u3099"),
                           QStringLiteral("가\u11A8")};
    for (const QString& one : ones) {
        EXPECT_EQ(graphemeCount(one), 1) << one.toStdString();
        const QString three = one + u'x' + one;
        EXPECT_EQ(graphemeCount(three), 3) << one.toStdString();
        EXPECT_EQ(graphemePrefix(three, 1), one);
        EXPECT_EQ(graphemePrefix(three, 2), QString(one + u'x'));
        EXPECT_EQ(graphemePrefix(three, 9), three);
    }
    EXPECT_EQ(graphemeCount({}), 0);
    EXPECT_EQ(graphemePrefix(u"abc", 0), QStringView());
    EXPECT_EQ(graphemeCount(u"\n\n\r"), 3);
}

TEST(Graphemes, AgreesWithIcuOnAnyMixture) {
    // From every class that the rules tell apart, and plain text often enough to be walked in runs.
    const QStringList pieces{QStringLiteral("a"),          QStringLiteral("plain words 12"),
                             QStringLiteral("中文字"),     QStringLiteral("ñ"),
                             QStringLiteral("\r"),         QStringLiteral("\n"),
                             QStringLiteral("\t"),         QString(QChar(0)),
                             QStringLiteral("\u0301"),     QStringLiteral("\u200D"),
                             QStringLiteral("\u200B"),     QStringLiteral("\uFE0F"),
                             QStringLiteral("\u3099"),     QStringLiteral("\uFF9E"),
                             QStringLiteral("\u302A"),     QStringLiteral("\u0600"),
                             QStringLiteral("\u0903"),     QStringLiteral("\u0915\u094D"),
                             QStringLiteral("\u0E33"),     QStringLiteral("\u00A9"),
                             QStringLiteral("\u00AE"),     QStringLiteral("\u00AD"),
                             QStringLiteral("\u3030"),     QStringLiteral("\u1112"),
                             QStringLiteral("\u1161"),     QStringLiteral("\u11AB"),
                             QStringLiteral("가"),         QStringLiteral("각"),
                             QStringLiteral("\U0001F1E8"), QStringLiteral("\U0001F468"),
                             QStringLiteral("\U0001F3FD"), QStringLiteral("\U000E0067"),
                             QStringLiteral("\U00020000"), QString(QChar(0xD83D)),
                             QString(QChar(0xDC00))};
    std::mt19937 random(20240229); // always the same texts
    std::uniform_int_distribution<qsizetype> piece(0, pieces.size() - 1);
    for (int round = 0; round < 20000; ++round) {
        QString text;
        for (int index = 0; index < 12; ++index) {
            text += pieces[piece(random)];
        }
        const QList<qsizetype> boundaries = boundariesByIcu(text);
        ASSERT_EQ(graphemeCount(text), boundaries.size() - 1) << text.toStdString();
        const qsizetype count = round % boundaries.size();
        ASSERT_EQ(graphemePrefix(text, count).size(), boundaries[count]) << text.toStdString();
    }
}

TEST(Graphemes, KeepsCharactersWholeAcrossTheSpansOfALongText) {
    // More than a million code units that are never simple; spans of ICU's end somewhere inside.
    const QString family = QStringLiteral("\U0001F468\u200D\U0001F469\u200D\U0001F467");
    const QString flag = QStringLiteral("\U0001F1E8\U0001F1F3");
    EXPECT_EQ(graphemeCount(family.repeated(300'000)), 300'000);
    EXPECT_EQ(graphemeCount(u'x' + flag.repeated(600'000)), 600'001);
    EXPECT_EQ(graphemePrefix(flag.repeated(600'000), 599'999).size(), 599'999 * flag.size());
}

} // namespace
} // namespace corvatto
