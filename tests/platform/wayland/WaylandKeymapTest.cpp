#include "platform/wayland/WaylandKeymap.h"
#include "WaylandServer.h"
#include "support/Eventually.h"

#include <QTemporaryFile>

#include <gtest/gtest.h>
#include <wayland-server-protocol.h>

namespace corvatto::test {
namespace {

// A seat that gets keyboards and loses them.
class FakeSeat {
public:
    explicit FakeSeat(wl_display* display)
        : m_global(wl_global_create(display, &wl_seat_interface, 1, this, &FakeSeat::bind)) {}
    ~FakeSeat() { wl_global_destroy(m_global); }
    FakeSeat(const FakeSeat&) = delete;
    FakeSeat& operator=(const FakeSeat&) = delete;

    void setKeyboard(bool isThere) {
        capabilities = isThere ? WL_SEAT_CAPABILITY_KEYBOARD : WL_SEAT_CAPABILITY_POINTER;
        for (wl_resource* resource : seats) {
            wl_seat_send_capabilities(resource, capabilities);
        }
    }
    void sendKeymap(const QByteArray& text, quint32 size, quint32 format = WL_KEYBOARD_KEYMAP_FORMAT_XKB_V1) {
        QTemporaryFile file;
        EXPECT_TRUE(file.open());
        file.write(text);
        file.flush();
        wl_keyboard_send_keymap(keyboard, format, file.handle(), size);
    }

    QList<wl_resource*> seats;
    wl_resource* keyboard = nullptr;
    quint32 capabilities = WL_SEAT_CAPABILITY_POINTER;

private:
    static void bind(wl_client* client, void* self, uint32_t version, uint32_t id) {
        static const struct wl_seat_interface requests = {
            [](wl_client*, wl_resource*, uint32_t) {},
            [](wl_client* asking, wl_resource* seat, uint32_t newId) {
                static_cast<FakeSeat*>(wl_resource_get_user_data(seat))->keyboard =
                    wl_resource_create(asking, &wl_keyboard_interface, 1, newId);
            },
            [](wl_client*, wl_resource*, uint32_t) {},
            [](wl_client*, wl_resource*) {
            }};
        wl_resource* resource = wl_resource_create(client, &wl_seat_interface, static_cast<int>(version), id);
        wl_resource_set_implementation(resource, &requests, self, nullptr);
        auto& seat = *static_cast<FakeSeat*>(self);
        seat.seats.append(resource);
        wl_seat_send_capabilities(resource, seat.capabilities);
    }

    wl_global* m_global;
};

TEST(WaylandKeymapTest, FollowsTheKeyboardOfTheSeat) {
    WaylandServer server;
    FakeSeat seat(server.display);
    const auto connection = server.connect();
    ASSERT_TRUE(connection);
    WaylandKeymap keymap(*connection);
    QByteArrayList told;
    QObject::connect(&keymap, &WaylandKeymap::changed, [&](const QByteArray& text) { told << text; });
    EXPECT_TRUE(eventually([&] { return seat.seats.size() == 2; })); // the connection's own, and this one
    seat.setKeyboard(true);
    server.flush();
    EXPECT_TRUE(eventually([&] { return seat.keyboard != nullptr; }));

    seat.sendKeymap("none", 4, WL_KEYBOARD_KEYMAP_FORMAT_NO_KEYMAP);
    seat.sendKeymap("endless", 0xFFFFFFFF);
    seat.sendKeymap({}, 100);
    seat.sendKeymap(QByteArray("first", 6), 6); // with the NUL at its end
    seat.sendKeymap("first", 5);                // the same
    seat.sendKeymap("shorter", 100);            // than announced
    server.flush();
    EXPECT_TRUE(eventually([&] { return told.size() > 1; }));

    seat.setKeyboard(false);
    seat.keyboard = nullptr;
    seat.setKeyboard(true);
    server.flush();
    EXPECT_TRUE(eventually([&] { return seat.keyboard != nullptr; }));
    seat.sendKeymap("another", 7);
    server.flush();
    EXPECT_TRUE(eventually([&] { return told.size() > 2; }));
    const QByteArrayList expected{"first", "shorter", "another"};
    EXPECT_EQ(told, expected);
}

} // namespace
} // namespace corvatto::test
