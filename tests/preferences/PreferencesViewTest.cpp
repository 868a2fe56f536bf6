#include "preferences/PreferencesView.h"
#include "preferences/LimitField.h"
#include "settings/SettingsKeys.h"
#include "support/Eventually.h"
#include "support/FakeDesktop.h"
#include "support/FakePasteboard.h"
#include "support/FakeUserDefaults.h"
#include "support/Printing.h"
#include "update/UpdateChecker.h"

#include <QLabel>
#include <QPushButton>
#include <QSlider>
#include <QTest>

#include <gtest/gtest.h>

namespace corvatto::test {
namespace {

class PreferencesViewTest : public ::testing::Test {
protected:
    PreferencesViewTest() { view.show(); }

    FakeUserDefaults defaults;
    FakePasteboard pasteboard;
    PreferencesView view{defaults, pasteboard};
};

TEST(LimitFieldTest, OnlyPlainDecimalNumbersCount) {
    for (const char* none : {"", "-5", " 20", "٣", "0x10", "9223372036854775808"}) {
        EXPECT_EQ(LimitField::limitFrom(QString::fromUtf8(none)), 0) << none;
    }
    EXPECT_EQ(LimitField::limitFrom(QStringLiteral("+020")), 20);
    EXPECT_EQ(LimitField::limitFrom(QStringLiteral("9223372036854775807")), 9223372036854775807);
}

TEST_F(PreferencesViewTest, FieldsShowWhatWasTypedUntilTheNextAppearance) {
    const auto fields = view.findChildren<LimitField*>();
    QTest::keyClicks(fields[0], QStringLiteral("abc"));
    EXPECT_EQ(fields[0]->text(), u"abc");
    defaults.setInteger(SettingsKeys::maxRetentionDays, 30);
    view.hide();
    view.show();
    EXPECT_EQ(fields[0]->text(), QString());
    EXPECT_EQ(fields[1]->text(), u"30");
}

TEST_F(PreferencesViewTest, TheSliderStoresTenthsAndLeavesWhatItCannotHave) {
    const auto labels = view.findChildren<QLabel*>();
    const auto isShown = [&](const QString& text) {
        return std::any_of(labels.begin(), labels.end(), [&](auto* label) { return label->text() == text; });
    };
    EXPECT_TRUE(isShown(QStringLiteral("0.5 秒")));
    view.findChild<QSlider*>()->setValue(3);
    EXPECT_EQ(defaults.stored[SettingsKeys::clipboardPollingInterval], QVariant(0.3));
    defaults.setNumber(SettingsKeys::clipboardPollingInterval, 12); // from elsewhere
    EXPECT_TRUE(isShown(QStringLiteral("12.0 秒")));
    EXPECT_EQ(defaults.number(SettingsKeys::clipboardPollingInterval), 12);
}

TEST_F(PreferencesViewTest, TheButtonChecksAtEveryClickAndShortcutChangesAreTold) {
    FakeDesktop desktop;
    UpdateChecker checker({defaults, desktop, desktop}, {}, QUrl(), {}); // which fails
    UpdateChecker::install(checker);
    view.findChild<QPushButton*>()->click();
    view.findChild<QPushButton*>()->click();
    EXPECT_TRUE(eventually([&] { return desktop.shown.size() == 2; }));

    int changes = 0;
    view.onHotkeyChanged = [&] {
        ++changes;
    };
    defaults.setInteger(SettingsKeys::maxItemCount, 5);
    defaults.setInteger(SettingsKeys::hotkeyKeyCode, 40);
    EXPECT_EQ(changes, 1);
}

} // namespace
} // namespace corvatto::test
