#include "platform/qt/IcuRelativeDateTimeFormatter.h"

#include "support/Printing.h"

#include <gtest/gtest.h>

namespace corvatto {
namespace {

QDateTime utc(int year, int month, int day, int hour = 12, int minute = 0) {
    return {QDate(year, month, day), QTime(hour, minute), Qt::UTC};
}

TEST(RelativeTimes, TheLargestWholeUnitCounts) {
    const IcuRelativeDateTimeFormatter english(QStringLiteral("en"));
    const IcuRelativeDateTimeFormatter chinese(QStringLiteral("zh-CN"));
    const QDateTime now = utc(2024, 3, 15);
    constexpr qint64 day = 86'400;
    struct Case {
        qint64 seconds;
        const char *inEnglish, *inChinese;
    };
    for (const Case& away :
         {Case{0, "0 sec. ago", "0秒前"}, Case{-59, "59 sec. ago", "59秒前"},
          Case{-60, "1 min. ago", "1分钟前"}, Case{-3599, "59 min. ago", "59分钟前"},
          Case{-3600, "1 hr. ago", "1小时前"}, Case{1 - day, "23 hr. ago", "23小时前"},
          Case{-7 * day + 1, "6 days ago", "6天前"}, Case{-7 * day, "1 wk. ago", "1周前"},
          Case{-29 * day + 1, "4 wk. ago", "4周前"}, // since 15 February
          Case{-29 * day, "1 mo. ago", "1个月前"}, Case{-366 * day + 1, "11 mo. ago", "11个月前"},
          Case{-366 * day, "1 yr. ago", "1年前"}, Case{2 * day, "in 2 days", "2天后"}}) {
        const QDateTime time = now.addSecs(away.seconds);
        EXPECT_EQ(english.localizedString(time, now), QString::fromUtf8(away.inEnglish)) << away.seconds;
        EXPECT_EQ(chinese.localizedString(time, now), QString::fromUtf8(away.inChinese)) << away.seconds;
    }
}

TEST(RelativeTimes, MonthsAreThoseOfTheCalendarThatTheUserReads) {
    const IcuRelativeDateTimeFormatter english(QStringLiteral("en"));
    EXPECT_EQ(english.localizedString(utc(2023, 1, 31), utc(2023, 2, 28)), u"1 mo. ago") << "the last day";
    EXPECT_EQ(english.localizedString(utc(2020, 2, 29), utc(2021, 2, 28, 11)), u"11 mo. ago");
    // In Shanghai the first of these is in February as well.
    const QDateTime shanghai(QDate(2024, 3, 1), QTime(3, 0), Qt::OffsetFromUTC, 8 * 3600);
    EXPECT_EQ(english.localizedString(utc(2024, 1, 31, 20), shanghai), u"4 wk. ago");
    EXPECT_EQ(english.localizedString(utc(2024, 1, 31, 19), shanghai), u"1 mo. ago");
    const IcuRelativeDateTimeFormatter unknown(QStringLiteral("no language at all"));
    EXPECT_TRUE(unknown.localizedString(utc(2024, 2, 27), shanghai).contains(u'2'));
}

} // namespace
} // namespace corvatto
