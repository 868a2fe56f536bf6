#include "platform/KeyEvent.h"

#include <QKeyEvent>

#include <gtest/gtest.h>

#include <set>

namespace corvatto {
namespace {

quint16 keyCodeOf(int key, quint32 scanCode = 0, Qt::KeyboardModifiers held = Qt::NoModifier) {
    return keyEventFrom(QKeyEvent(QEvent::KeyPress, key, held, scanCode, 0, 0)).keyCode;
}

TEST(KeyEvents, KeysGoByPositionAndCommandsByWhatIsPrintedToo) {
    int count = 0;
    std::set<quint32> evdevCodes;
    for (quint32 keyCode = 0; keyCode <= 0xFFFF; ++keyCode) {
        if (const auto evdev = evdevCodeForKeyCode(keyCode)) {
            ++count;
            evdevCodes.insert(*evdev);
            EXPECT_EQ(keyCodeForEvdevCode(*evdev), keyCode);
            EXPECT_EQ(keyCodeOf(0, *evdev + 8), keyCode) << "as the X server numbers it";
        }
    }
    constexpr quint32 keyOfC = 46 + 8, keyOfM = 50 + 8;
    EXPECT_EQ(keyCodeOf(Qt::Key_Comma, keyOfM, Qt::ControlModifier), keyComma) << "printed, as on AZERTY";
    EXPECT_EQ(keyCodeOf(Qt::Key_C, keyOfM, Qt::MetaModifier), keyC);
    EXPECT_EQ(keyCodeOf(Qt::Key_J, keyOfC, Qt::ControlModifier), keyC) << "in its place, as on Dvorak";
    EXPECT_EQ(keyCodeOf(Qt::Key_Comma, keyOfM), 46) << "only typed";
    EXPECT_EQ(keyCodeOf(Qt::Key_1, 79 + 8), 83) << "the keypad has no shortcuts";
    EXPECT_EQ(keyCodeOf(Qt::Key_C), keyC) << "events that were made up carry no position";
    EXPECT_EQ(evdevCodes.size(), static_cast<std::size_t>(count));
    EXPECT_GT(count, 100);
    EXPECT_EQ(keyCodeForEvdevCode(0), std::nullopt);
}

} // namespace
} // namespace corvatto
