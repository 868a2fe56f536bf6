#include "platform/dbus/KeyNames.h"
#include "platform/HotKeyCenter.h"
#include "platform/dbus/HeldKey.h"
#include "support/Printing.h"

#include <gtest/gtest.h>

namespace corvatto::test {
namespace {

TEST(KeyNamesTest, NamesWhatAKeyPrintsOrDoes) {
    constexpr quint32 all = commandKey | shiftKey | optionKey | controlKey;
    EXPECT_EQ(portalTrigger(9, commandKey | shiftKey), u"LOGO+SHIFT+v");
    EXPECT_EQ(portalTrigger(122, all), u"LOGO+CTRL+ALT+SHIFT+F1");
    EXPECT_EQ(swayBinding(9, commandKey | shiftKey), u"Mod4+Shift+v");
    EXPECT_EQ(swayBinding(50, controlKey | optionKey), u"Ctrl+Mod1+grave");
    EXPECT_EQ(swayBinding(36, commandKey), u"Mod4+Return");
    EXPECT_EQ(swayBinding(10, commandKey), u"Mod4+less"); // the extra key of ISO keyboards

    const auto are = [](const QList<int>& combinations, const QList<QKeyCombination>& expected) {
        return std::equal(combinations.begin(), combinations.end(), expected.begin(), expected.end(),
                          [](int left, QKeyCombination right) { return left == right.toCombined(); });
    };
    EXPECT_TRUE(are(qtKeyCombinations(9, commandKey | shiftKey), {Qt::META | Qt::SHIFT | Qt::Key_V}));
    EXPECT_TRUE(are(qtKeyCombinations(122, all), {Qt::META | Qt::CTRL | Qt::ALT | Qt::SHIFT | Qt::Key_F1}));
    EXPECT_TRUE(are(qtKeyCombinations(18, optionKey), {Qt::ALT | Qt::Key_1}));
    EXPECT_TRUE(are(qtKeyCombinations(18, commandKey | shiftKey),
                    {Qt::META | Qt::SHIFT | Qt::Key_1, Qt::META | Qt::Key_Exclam}));

    for (const quint32 nameless : {83u /* 1 on the keypad */, 66u /* no key */, 100000u}) {
        EXPECT_EQ(qtKeyCombinations(nameless, commandKey), QList<int>());
        EXPECT_EQ(portalTrigger(nameless, commandKey), QString());
    }
}

TEST(HeldKeyTest, RepeatsAreNoPressesUnlessARelaseWasLost) {
    HeldKey key;
    EXPECT_TRUE(key.press());
    EXPECT_FALSE(key.press());
    key.release();
    EXPECT_TRUE(key.press());
    HeldKey impatient(std::chrono::milliseconds(0));
    EXPECT_TRUE(impatient.press());
    EXPECT_TRUE(impatient.press());
}

} // namespace
} // namespace corvatto::test
