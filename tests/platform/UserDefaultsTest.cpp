#include "support/FakeUserDefaults.h"

#include <gtest/gtest.h>

#include <limits>

namespace corvatto {
namespace {

QVariant text(const char* value) {
    return QString::fromUtf8(value);
}

TEST(UserDefaults, ExactConversionsTakeOnlyWholeValues) {
    constexpr qint64 most = std::numeric_limits<qint64>::max();
    EXPECT_EQ(exactInteger(7), 7);
    EXPECT_EQ(exactInteger(most), most);
    EXPECT_EQ(exactInteger(text("-9223372036854775808")), std::numeric_limits<qint64>::min());
    EXPECT_EQ(exactInteger(3.0), 3);
    for (const QVariant& none : {QVariant(), QVariant(2.5), QVariant(9.3e18), QVariant(std::nan("")),
                                 text("2.0"), text("9223372036854775808"), text("0x10"), text("1 2"),
                                 text(""), text("一"), QVariant(true), QVariant(QByteArray("5"))}) {
        EXPECT_EQ(exactInteger(none), std::nullopt) << none.toString().toStdString();
    }
    EXPECT_EQ(exactNumber(text("2.5")), 2.5);
    EXPECT_EQ(exactNumber(text("1e3")), 1000.0);
    EXPECT_EQ(exactNumber(4), 4.0);
    for (const QVariant& none :
         {QVariant(), text("2,5"), text("inf"), text("nan"), text("x"), QVariant(false)}) {
        EXPECT_EQ(exactNumber(none), std::nullopt) << none.toString().toStdString();
    }
}

TEST(UserDefaults, ReadsAreStoredThenRegisteredThenZero) {
    test::FakeUserDefaults defaults;
    const QString key = QStringLiteral("key");
    int changes = 0;
    QObject::connect(&defaults, &UserDefaults::didChange, &defaults, [&changes] { ++changes; });
    EXPECT_EQ(defaults.integer(key), 0);
    EXPECT_EQ(defaults.number(key), 0.0);
    EXPECT_EQ(defaults.string(key), std::nullopt);

    defaults.registerDefaults({{key, 0.5}});
    defaults.registerDefaults({{QStringLiteral("other"), 1}}); // adds, does not replace
    EXPECT_EQ(defaults.number(key), 0.5);
    EXPECT_EQ(defaults.integer(key), 0);
    EXPECT_EQ(changes, 0);

    defaults.setNumber(key, -2.75);
    EXPECT_EQ(defaults.integer(key), -2) << "toward zero";
    defaults.setObject(key, text("3.9"));
    EXPECT_EQ(defaults.integer(key), 3);
    EXPECT_EQ(defaults.string(key), QStringLiteral("3.9"));
    defaults.setObject(key, text("no number")); // present, so the registered value is not asked
    EXPECT_EQ(defaults.number(key), 0.0);
    defaults.setNumber(key, 1e300);
    EXPECT_EQ(defaults.integer(key), 0) << "out of range";
    EXPECT_EQ(changes, 4);
}

} // namespace
} // namespace corvatto
