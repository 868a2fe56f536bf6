#include "platform/wayland/WaylandKeymap.h"
#include "WaylandTest.h"

namespace corvatto::test {
namespace {

using WaylandKeymapTest = WaylandTest;

TEST_F(WaylandKeymapTest, FollowsTheKeyboardOfTheSeat) {
    start();
    WaylandKeymap keymap(*connection);
    QByteArrayList told;
    QObject::connect(&keymap, &WaylandKeymap::changed, [&](const QByteArray& text) { told << text; });
    letGo();
    compositor->setKeyboard(true);
    EXPECT_TRUE(eventually([this] { return compositor->isKeyboardWanted(); }));

    compositor->sendKeymap("none", 4, WL_KEYBOARD_KEYMAP_FORMAT_NO_KEYMAP);
    compositor->sendKeymap("endless", 0xFFFFFFFF);
    compositor->sendKeymap({}, 100);
    compositor->sendKeymap(QByteArray("first", 6), 6); // with the NUL at its end
    compositor->sendKeymap("first", 5);                // the same
    compositor->sendKeymap("shorter", 100);            // than announced
    EXPECT_TRUE(eventually([&] { return told.size() > 1; }));

    compositor->setKeyboard(false);
    compositor->setKeyboard(true);
    EXPECT_TRUE(eventually([this] { return compositor->isKeyboardWanted(); }));
    compositor->sendKeymap("another", 7);
    EXPECT_TRUE(eventually([&] { return told.size() > 2; }));
    const QByteArrayList expected{"first", "shorter", "another"};
    EXPECT_EQ(told, expected);
}

} // namespace
} // namespace corvatto::test
