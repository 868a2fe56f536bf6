#include "base/Graphemes.h"

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

TEST(Graphemes, AgreesWithIcuOnAnyMixture) {
    // From every class that the rules tell apart, and plain text often enough to be walked in runs.
    QStringList pieces =
        QStringLiteral(
            "a|plain words 12|中文字|ñ|\r|\n|\t|\u0301|\u200D|\u200B|\uFE0F|\u3099|\uFF9E|\u302A|"
            "\u0600|\u0903|\u0915\u094D|\u0E33|\u00A9|\u00AE|\u00AD|\u3030|\u1112|\u1161|\u11AB|가|각|"
            "\U0001F1E8|\U0001F468|\U0001F3FD|\U000E0067|\U00020000")
            .split(u'|');
    pieces << QString(QChar(0)) << QString(QChar(0xD83D)) << QString(QChar(0xDC00));
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
