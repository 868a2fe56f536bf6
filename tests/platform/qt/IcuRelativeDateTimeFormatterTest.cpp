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
    const QDateTime now = utc(2024, 3, 15); // 29 days after 15 February
    constexpr qint64 day = 86'400;
    using Case = std::pair<qint64, const char*>;
    for (const auto& [seconds, expected] :
         {Case{0, "0 sec. ago"}, Case{-59, "59 sec. ago"}, Case{-60, "1 min. ago"},
          Case{-3599, "59 min. ago"}, Case{-3600, "1 hr. ago"}, Case{1 - day, "23 hr. ago"},
          Case{-7 * day + 1, "6 days ago"}, Case{-7 * day, "1 wk. ago"}, Case{-29 * day + 1, "4 wk. ago"},
          Case{-29 * day, "1 mo. ago"}, Case{-366 * day + 1, "11 mo. ago"}, Case{-366 * day, "1 yr. ago"},
          Case{2 * day, "in 2 days"}}) {
        EXPECT_EQ(english.localizedString(now.addSecs(seconds), now), QLatin1String(expected));
    }
    const IcuRelativeDateTimeFormatter chinese(QStringLiteral("zh-CN"));
    EXPECT_EQ(chinese.localizedString(now.addSecs(-29 * day), now), u"1个月前");
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
