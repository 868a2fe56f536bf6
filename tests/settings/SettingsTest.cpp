#include "settings/LaunchDefaults.h"
#include "settings/Preferences.h"
#include "settings/SettingsKeys.h"
#include "support/FakeUserDefaults.h"

#include <gtest/gtest.h>

namespace corvatto {
namespace {

TEST(Settings, FirstRunReadsTheDefaultsAndStoresNothing) {
    test::FakeUserDefaults defaults;
    registerLaunchDefaults(defaults);
    EXPECT_EQ(defaults.number(SettingsKeys::clipboardPollingInterval), 0.5);
    EXPECT_EQ(defaults.object(SettingsKeys::corvattoHistoryWindowOpenCount), QVariant(0));
    EXPECT_EQ(defaults.object(SettingsKeys::corvattoLastUpdateCheckAt), QVariant(0));
    // These are not registered: their readers fall back.
    for (const QString& key :
         {SettingsKeys::maxItemCount, SettingsKeys::maxRetentionDays, SettingsKeys::hotkeyKeyCode,
          SettingsKeys::hotkeyModifiers, SettingsKeys::corvattoIgnoredUpdateVersion}) {
        EXPECT_FALSE(defaults.object(key).isValid()) << key.toStdString();
    }
    EXPECT_TRUE(defaults.stored.isEmpty());

    defaults.setNumber(SettingsKeys::corvattoLastUpdateCheckAt, 1700000000.25);
    EXPECT_EQ(defaults.number(SettingsKeys::corvattoLastUpdateCheckAt), 1700000000.25);
}

TEST(Settings, PreferencesFollowTheStoredLimits) {
    test::FakeUserDefaults defaults;
    const Preferences preferences(defaults);
    EXPECT_EQ(preferences.maxItemCount(), 0);
    EXPECT_EQ(preferences.maxRetentionDays(), 0);

    defaults.setInteger(SettingsKeys::maxItemCount, 500);
    defaults.setObject(SettingsKeys::maxRetentionDays, QStringLiteral("30")); // as a settings file holds it
    EXPECT_EQ(preferences.maxItemCount(), 500);
    EXPECT_EQ(preferences.maxRetentionDays(), 30);

    for (const QVariant& noInteger : {QVariant(2.5), QVariant(QStringLiteral("many")),
                                      QVariant(QStringLiteral("3 "
                                                              "4")),
                                      QVariant(QStringList{QStringLiteral("3")}), QVariant(true)}) {
        defaults.setObject(SettingsKeys::maxItemCount, noInteger);
        EXPECT_EQ(preferences.maxItemCount(), 0) << noInteger.toString().toStdString();
    }
}

TEST(Settings, UserDefaultFallsBackPerType) {
    test::FakeUserDefaults defaults;
    const UserDefault<double> number(defaults, QStringLiteral("number"), 1.5);
    const UserDefault<QString> text(defaults, QStringLiteral("text"), QStringLiteral("none"));
    EXPECT_EQ(number.wrappedValue(), 1.5);
    EXPECT_EQ(text.wrappedValue(), QStringLiteral("none"));
    defaults.setObject(number.key, QStringLiteral("2.25"));
    defaults.setObject(text.key, QString());
    EXPECT_EQ(number.wrappedValue(), 2.25);
    EXPECT_EQ(text.wrappedValue(), QString());
    defaults.setObject(number.key, QStringLiteral("x"));
    EXPECT_EQ(number.wrappedValue(), 1.5);
}

} // namespace
} // namespace corvatto
