#include "platform/dbus/KeyNames.h"
#include "Keymap.h"
#include "platform/HotKeyCenter.h"
#include "platform/dbus/HeldKey.h"
#include "support/Printing.h"

#include <gtest/gtest.h>

namespace corvatto::test {
namespace {

void expectCombinations(const KeyNames& names, quint32 keyCode, quint32 modifiers,
                        const QList<QKeyCombination>& expected) {
    QList<int> combinations;
    for (const QKeyCombination combination : expected) {
        combinations.append(combination.toCombined());
    }
    EXPECT_EQ(names.qtCombinations(keyCode, modifiers), combinations) << keyCode;
}

constexpr quint32 all = commandKey | shiftKey | optionKey | controlKey;

TEST(KeyNamesTest, WithoutAKeymapKeysAreThoseOfAUsKeyboard) {
    for (const KeyNames& names : {KeyNames(), KeyNames("no keymap")}) {
        EXPECT_EQ(names.portalTrigger(9, commandKey | shiftKey), u"LOGO+SHIFT+v");
        EXPECT_EQ(names.portalTrigger(122, all), u"LOGO+CTRL+ALT+SHIFT+F1");
        EXPECT_EQ(names.swayBinding(9, commandKey | shiftKey), u"Mod4+Shift+v");
        EXPECT_EQ(names.swayBinding(50, controlKey | optionKey), u"Ctrl+Mod1+grave");
        expectCombinations(names, 9, commandKey | shiftKey, {Qt::META | Qt::SHIFT | Qt::Key_V});
        expectCombinations(names, 122, all, {Qt::META | Qt::CTRL | Qt::ALT | Qt::SHIFT | Qt::Key_F1});
        expectCombinations(names, 36, commandKey, {Qt::META | Qt::Key_Return});
        expectCombinations(names, 18, optionKey, {Qt::ALT | Qt::Key_1});
        expectCombinations(names, 18, commandKey | shiftKey,
                           {Qt::META | Qt::Key_Exclam, Qt::META | Qt::SHIFT | Qt::Key_1});
        for (const quint32 nameless : {83u /* 1 on the keypad */, 66u /* no key */, 100000u}) {
            expectCombinations(names, nameless, commandKey, {});
            EXPECT_EQ(names.portalTrigger(nameless, commandKey), QString());
        }
    }
}

TEST(KeyNamesTest, APositionIsNamedAsTheLayoutsLabelIt) {
    const KeyNames german(keymap("de"));
    expectCombinations(german, 6, commandKey, {Qt::META | Qt::Key_Y}); // where a US keyboard has Z
    EXPECT_EQ(german.swayBinding(41, commandKey), u"Mod4+odiaeresis");
    const KeyNames russianAndUs(keymap("ru,us"));
    expectCombinations(russianAndUs, 9, commandKey,
                       {Qt::META | static_cast<Qt::Key>(u'М'), Qt::META | Qt::Key_V});
    EXPECT_EQ(russianAndUs.portalTrigger(9, commandKey), u"LOGO+v") << "as on a US keyboard";
}

TEST(HeldKeyTest, APressCountsWhenTheReleaseBeforeItWasLost) {
    HeldKey impatient(std::chrono::milliseconds(0));
    EXPECT_TRUE(impatient.press());
    EXPECT_TRUE(impatient.press());
}

} // namespace
} // namespace corvatto::test
