#include "preferences/PreferencesView.h"
#include "hotkey/ShortcutRecorder.h"
#include "preferences/LimitField.h"
#include "settings/SettingsKeys.h"
#include "support/Eventually.h"
#include "support/FakeAlerts.h"
#include "support/FakePasteboard.h"
#include "support/FakeUserDefaults.h"
#include "support/FakeWorkspace.h"
#include "update/UpdateChecker.h"

#include <QLabel>
#include <QPushButton>
#include <QSlider>
#include <QTest>

#include <gmock/gmock.h>

namespace corvatto::test {
namespace {

using ::testing::ElementsAre;

class PreferencesViewTest : public ::testing::Test {
protected:
    PreferencesViewTest() { view.show(); }

    LimitField* field(int position) { return view.findChildren<LimitField*>().at(position); }
    QSlider* slider() { return view.findChild<QSlider*>(); }
    bool shows(const QString& text) {
        const auto labels = view.findChildren<QLabel*>();
        return std::any_of(labels.begin(), labels.end(),
                           [&](const QLabel* label) { return label->text() == text; });
    }

    FakeUserDefaults defaults;
    FakePasteboard pasteboard;
    PreferencesView view{defaults, pasteboard};
};

TEST_F(PreferencesViewTest, EveryKeystrokeIsStored) {
    std::vector<qint64> stored;
    QObject::connect(&defaults, &UserDefaults::didChange, &view,
                     [&] { stored.push_back(defaults.integer(SettingsKeys::maxItemCount)); });
    QTest::keyClicks(field(0), QStringLiteral("1000"));
    EXPECT_THAT(stored, ElementsAre(1, 10, 100, 1000));
    QTest::keyClicks(field(1), QStringLiteral("7"));
    EXPECT_EQ(defaults.integer(SettingsKeys::maxRetentionDays), 7);
    field(0)->clear();
    EXPECT_EQ(defaults.integer(SettingsKeys::maxItemCount), 0);
}

TEST(LimitFieldTest, OnlyPlainDecimalNumbersCount) {
    const std::pair<const char*, qint64> rows[] = {
        {"", 0},
        {"abc", 0},
        {"-5", 0},
        {"+20", 20},
        {" 20", 0},
        {"20 ", 0},
        {"1,000", 0},
        {"1.5", 0},
        {"++1", 0},
        {"+", 0},
        {"007", 7},
        {"٣", 0},
        {"1e3", 0},
        {"0x10", 0},
        {"9223372036854775807", 9223372036854775807},
        {"9223372036854775808", 0},
    };
    for (const auto& [text, limit] : rows) {
        EXPECT_EQ(LimitField::limitFrom(QString::fromUtf8(text)), limit) << text;
    }
}

TEST_F(PreferencesViewTest, FieldsShowWhatWasTypedUntilTheNextAppearance) {
    QTest::keyClicks(field(0), QStringLiteral("abc"));
    EXPECT_EQ(field(0)->text(), QStringLiteral("abc"));
    defaults.setInteger(SettingsKeys::maxRetentionDays, 30);
    view.hide();
    view.show();
    EXPECT_EQ(field(0)->text(), QString());
    EXPECT_EQ(field(0)->placeholderText(), QStringLiteral("1000"));
    EXPECT_EQ(field(1)->text(), QStringLiteral("30"));
}

TEST_F(PreferencesViewTest, TheSliderStoresTenthsAndShowsWhatIsStored) {
    EXPECT_TRUE(shows(QStringLiteral("0.5 秒")));
    slider()->setValue(3);
    EXPECT_EQ(defaults.stored[SettingsKeys::clipboardPollingInterval], QVariant(0.3));
    slider()->setValue(slider()->maximum());
    EXPECT_TRUE(shows(QStringLiteral("5.0 秒")));
    slider()->setValue(slider()->minimum());
    EXPECT_TRUE(shows(QStringLiteral("0.1 秒")));

    // A value from elsewhere that the slider cannot have is shown, and not replaced.
    defaults.setNumber(SettingsKeys::clipboardPollingInterval, 12);
    EXPECT_TRUE(shows(QStringLiteral("12.0 秒")));
    EXPECT_EQ(defaults.number(SettingsKeys::clipboardPollingInterval), 12);
}

TEST_F(PreferencesViewTest, TheButtonChecksAtEveryClickAndShortcutChangesAreTold) {
    FakeAlerts alerts;
    FakeWorkspace workspace;
    UpdateChecker checker({defaults, alerts, workspace}, QUrl(), QStringLiteral("1.0")); // which fails
    UpdateChecker::install(checker);
    auto* button = view.findChild<QPushButton*>();
    EXPECT_EQ(button->text(), QStringLiteral("检查更新"));
    button->click();
    button->click();
    EXPECT_TRUE(eventually([&] { return alerts.shown.size() == 2; }));

    int changes = 0;
    view.onHotkeyChanged = [&] {
        ++changes;
    };
    defaults.setInteger(SettingsKeys::maxItemCount, 5);
    EXPECT_EQ(changes, 0);
    defaults.setInteger(SettingsKeys::hotkeyKeyCode, 40);
    EXPECT_EQ(changes, 1);
}

} // namespace
} // namespace corvatto::test
