// Where the program's windows stand, and who has the keyboard, whatever the window manager does.
#include "EndToEndTest.h"

namespace corvatto::test {

namespace {

// Puts every new window in the middle of the screen, moves it where it is asked to afterwards, and gives the
// keyboard to none.
class WilfulWindowManager : public XConnection {
public:
    WilfulWindowManager(const QByteArray& display, const QByteArray& name) : XConnection(display) {
        const quint32 requests = XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT;
        xcb_change_window_attributes(raw(), root(), XCB_CW_EVENT_MASK, &requests);
        const xcb_window_t check = xcb_generate_id(raw());
        xcb_create_window(raw(), XCB_COPY_FROM_PARENT, check, root(), -9, -9, 1, 1, 0,
                          XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, 0, nullptr);
        for (const auto window : {root(), check}) {
            put(window, atom("_NET_SUPPORTING_WM_CHECK"), XCB_ATOM_WINDOW, QList{check});
        }
        put(check, atom("_NET_WM_NAME"), atom("UTF8_STRING"), name);
        xcb_delete_property(raw(), root(), atom("_NET_SUPPORTED"));
        sync();
    }

    bool showsWindows = true;
    xcb_window_t requested = XCB_NONE; // that it was asked last to show
    xcb_window_t hidden = XCB_NONE;    // that its program said last it has hidden

    void show(xcb_window_t window) {
        xcb_map_window(raw(), window);
        sync();
    }
    void handleRequests() {
        while (const auto event = owned(xcb_poll_for_event(raw()))) {
            if ((event->response_type & 0x7F) == XCB_MAP_REQUEST) {
                requested = reinterpret_cast<const xcb_map_request_event_t&>(*event).window;
                const quint32 middle = 300;
                xcb_configure_window(raw(), requested, XCB_CONFIG_WINDOW_Y, &middle);
                if (showsWindows) {
                    xcb_map_window(raw(), requested);
                }
            } else if ((event->response_type & 0x7F) == XCB_UNMAP_NOTIFY) {
                hidden = reinterpret_cast<const xcb_unmap_notify_event_t&>(*event).window;
            } else if ((event->response_type & 0x7F) == XCB_CONFIGURE_REQUEST) {
                const auto& request = reinterpret_cast<const xcb_configure_request_event_t&>(*event);
                const quint32 values[] = {static_cast<quint32>(request.x), static_cast<quint32>(request.y),
                                          request.width, request.height};
                const quint16 wanted = request.value_mask & 0xF; // place and size
                if (wanted == 0xF) {
                    xcb_configure_window(raw(), request.window, wanted, values);
                }
            }
        }
        sync();
    }
};

class WindowManagerTest : public X11Test {
protected:
    bool soonAt(const QRect& expected) {
        return soon([&] { return x.geometry(panel()) == expected; });
    }
    // The window with its frame is in the middle of the screen, and has the keyboard.
    bool preferencesSoonCentred() {
        const XConnection client(desktop.display());
        return soon([this, &client] {
            const auto window = x.activeWindow();
            auto frame = valuesIn(client.property(window, "_NET_FRAME_EXTENTS"));
            frame.resize(4); // left, right, top and bottom
            const QPoint shift(int(frame[1]) - int(frame[0]), int(frame[3]) - int(frame[2]));
            const QPoint centre = x.geometry(window).center() + shift / 2;
            return isInFront("Corvatto Preferences") && frame[2] > 0 &&
                   (centre - QPoint(640, 550)).manhattanLength() <= 3; // halves of pixels
        });
    }
};

} // namespace

TEST_F(WindowManagerTest, WithoutOneThePanelHasTheKeyboard) {
    desktop.stopWindowManager();
    start();
    EXPECT_TRUE(soonAt({0, 660, 1280, 440}));
    for (int i = 0; i < 2; ++i) {
        EXPECT_TRUE(soon([this] {
            desktop.key("Escape");
            return panel() == XCB_NONE;
        }));
        desktop.key("super+shift+v");
        EXPECT_TRUE(soon([this] { return panel() != XCB_NONE; }));
    }
}

TEST_F(WindowManagerTest, AWilfulOneIsAskedAgain) {
    desktop.stopWindowManager();
    WilfulWindowManager manager(desktop.display(), "Mutter");
    start();
    EXPECT_TRUE(soon([&] {
        manager.handleRequests();
        return x.geometry(panel()) == QRect(0, 660, 1280, 440);
    }));
    const auto type = x.cardinal(panel(), "_NET_WM_WINDOW_TYPE");
    EXPECT_EQ(manager.name(type), "_NET_WM_WINDOW_TYPE_UTILITY") << "it lists dialogs in the task bar";
    EXPECT_TRUE(soon([&] {
        manager.handleRequests();
        desktop.key("Escape");
        return panel() == XCB_NONE;
    }));
}

TEST_F(WindowManagerTest, ALateOneShowsThePanelThatIsHiddenMeanwhile) {
    desktop.stopWindowManager();
    WilfulWindowManager late(desktop.display(), "Late");
    late.showsWindows = false;
    const auto isTold = [&late](const xcb_window_t& window) {
        return soon([&] {
            late.handleRequests();
            return window != XCB_NONE;
        });
    };
    start();
    ASSERT_TRUE(isTold(late.requested));
    ASSERT_EQ(corvatto({"--toggle"}), 0);
    ASSERT_TRUE(isTold(late.hidden));
    late.show(late.hidden);
    ASSERT_TRUE(soon([&] { return x.keyboard() == late.hidden; })) << "the program has not noticed";
    EXPECT_EQ(corvatto({"--toggle"}), 0); // to show what Qt believes hidden
    EXPECT_TRUE(soon([this] { return setting("corvattoHistoryWindowOpenCount") == 2; }));
    EXPECT_EQ(panel(), late.hidden);
    desktop.key("Escape");
    EXPECT_TRUE(soonHidden());
}

TEST_F(WindowManagerTest, ARequestToShowIsLostWhileTheSessionStarts) {
    desktop.stopWindowManager();
    {
        WilfulWindowManager earlier(desktop.display(), "Earlier");
        earlier.showsWindows = false; // before it ends
        start();
        ASSERT_TRUE(soon([&] {
            earlier.handleRequests();
            return earlier.requested != XCB_NONE;
        }));
        EXPECT_TRUE(x.states(earlier.requested).contains("_NET_WM_STATE_SKIP_TASKBAR"))
            << "before it appears";
    }
    desktop.startWindowManager();
    EXPECT_TRUE(soon([this] { return panelHasKeyboard(); }));
}

TEST_F(WindowManagerTest, ABarTakesSpaceOfItsMonitorOnly) {
    run("xrandr --setmonitor left 640/170x1100/291+0+0 screen");
    run("xrandr --setmonitor right 640/170x1100/291+640+0 none");
    x.click({1000, 100});
    launch();
    EXPECT_TRUE(soonAt({640, 660, 640, 440}));
    const auto bar = x.createWindow({640, 1040, 640, 60}, "Bar");
    const XConnection client(desktop.display());
    client.put(bar, client.atom("_NET_WM_STRUT_PARTIAL"), XCB_ATOM_CARDINAL,
               QList<quint32>{0, 0, 0, 60, 0, 0, 0, 0, 0, 0, 640, 1279});
    client.sync();
    EXPECT_TRUE(soonAt({640, 603, 640, 437}));
    ASSERT_TRUE(soonToggled("super+shift+v"));
    x.click({300, 100});
    showPanel();
    EXPECT_TRUE(soonAt({0, 660, 640, 440}));
}

TEST_F(WindowManagerTest, PreferencesComeToTheDesktopAndTheMiddle) {
    launch();
    desktop.key("ctrl+comma");
    EXPECT_TRUE(preferencesSoonCentred());
    EXPECT_TRUE(x.states(x.activeWindow()).contains("_NET_WM_STATE_SKIP_TASKBAR"));
    x.switchDesktop(1);
    x.click(x.geometry(panel()).topLeft() + QPoint(600, 60));
    ASSERT_TRUE(soon([this] { return panelHasKeyboard(); }));
    desktop.key("ctrl+comma");
    EXPECT_TRUE(preferencesSoonCentred());
}

} // namespace corvatto::test
