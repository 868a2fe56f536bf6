#include "settings/LaunchDefaults.h"
#include "settings/Preferences.h"
#include "settings/SettingsKeys.h"
#include "settings/SettingsReport.h"
#include "settings/Shortcut.h"
#include "support/CapturedOutput.h"
#include "support/FakeUserDefaults.h"

#include <gtest/gtest.h>

namespace corvatto {
namespace {

TEST(Settings, DefaultsAreReadAndNotStoredAndWhatDoesNotConvertIsTheDefault) {
    test::FakeUserDefaults defaults;
    registerLaunchDefaults(defaults);
    const Preferences preferences(defaults);
    EXPECT_EQ(defaults.number(SettingsKeys::clipboardPollingInterval), 0.5);
    EXPECT_EQ(preferences.maxRetentionDays(), 0);
    EXPECT_TRUE(defaults.stored.isEmpty());

    defaults.setInteger(SettingsKeys::maxItemCount, 500);
    defaults.setObject(SettingsKeys::maxRetentionDays, QStringLiteral("30")); // as a settings file holds it
    EXPECT_EQ(preferences.maxItemCount(), 500);
    EXPECT_EQ(preferences.maxRetentionDays(), 30);
    for (const QVariant& noInteger : {QVariant(2.5), QVariant(QStringLiteral("3 4")), QVariant(true)}) {
        defaults.setObject(SettingsKeys::maxItemCount, noInteger);
        EXPECT_EQ(preferences.maxItemCount(), 0) << noInteger.toString().toStdString();
    }
    const UserDefault<double> number(defaults, QStringLiteral("number"), 1.5);
    for (const auto& [stored, expected] : {std::pair("2.25", 2.25), {"x", 1.5}}) {
        defaults.setObject(number.key, QString::fromLatin1(stored));
        EXPECT_EQ(number.wrappedValue(), expected);
    }
}

TEST(Settings, AValueThatIsNotUsedIsReportedOnce) {
    test::FakeUserDefaults defaults;
    registerLaunchDefaults(defaults);
    test::CapturedOutput output;
    const SettingsReport report(defaults);
    defaults.setNumber(SettingsKeys::clipboardPollingInterval, 0.1);
    defaults.setInteger(SettingsKeys::maxRetentionDays, -5);
    defaults.setInteger(SettingsKeys::hotkeyKeyCode, 40);
    EXPECT_EQ(output.text(), "") << "all of this is used";
    defaults.setNumber(SettingsKeys::clipboardPollingInterval, 99);
    QByteArray lines =
        "[UserDefaults] ERROR: clipboardPollingInterval is 99, not between 0.1 and 5; 5 is used.\n";
    EXPECT_EQ(output.text(), lines);
    defaults.setObject(SettingsKeys::maxItemCount, QStringLiteral("many\n"));
    defaults.setInteger(SettingsKeys::hotkeyModifiers, -1);
    lines += "[UserDefaults] ERROR: maxItemCount is no number; 0 is used.\n"
             "[UserDefaults] ERROR: hotkeyModifiers is -1, not a sum of modifiers; 768 is used.\n";
    EXPECT_EQ(output.text(), lines);
}

TEST(Settings, TheShortcutIsShownAsItIsStoredAndRegisteredWithDefaults) {
    test::FakeUserDefaults defaults;
    EXPECT_EQ(storedShortcut(defaults), (Shortcut{0, 0}));
    EXPECT_EQ(shownShortcut(defaults), (Shortcut{9, 768}));
    EXPECT_EQ(registeredShortcut(defaults), (Shortcut{9, 768}));
    for (const auto& [stored, shown, registered] :
         {std::tuple("40.9", 40, 40), {"0", 0, 9}, {"-1", -1, 9}, {"V", 9, 9}}) {
        defaults.setObject(SettingsKeys::hotkeyKeyCode, QString::fromLatin1(stored));
        EXPECT_EQ(shownShortcut(defaults), (Shortcut{shown, 768})) << stored;
        EXPECT_EQ(registeredShortcut(defaults), (Shortcut{registered, 768})) << stored;
    }
    defaults.setObject(SettingsKeys::hotkeyKeyCode, qint64{4294967336}); // 40 in its lower half
    EXPECT_EQ(registeredShortcut(defaults), (Shortcut{9, 768}));
    defaults.setInteger(SettingsKeys::hotkeyModifiers, 2304);
    EXPECT_EQ(registeredShortcut(defaults), (Shortcut{9, 2304}));
}

} // namespace
} // namespace corvatto
