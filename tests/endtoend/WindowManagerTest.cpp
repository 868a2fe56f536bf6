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

    void handleRequests() {
        while (const auto event = owned(xcb_poll_for_event(raw()))) {
            if ((event->response_type & 0x7F) == XCB_MAP_REQUEST) {
                const auto window = reinterpret_cast<const xcb_map_request_event_t&>(*event).window;
                const quint32 middle = 300;
                xcb_configure_window(raw(), window, XCB_CONFIG_WINDOW_Y, &middle);
                xcb_map_window(raw(), window);
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
    void run(const QByteArray& command) {
        auto words = command.split(' ');
        Process process(words.takeFirst(), words, desktop.environment());
        ASSERT_EQ(process.exitStatus(), 0) << command.constData();
    }
    void start() {
        program = std::make_unique<Process>(CORVATTO_PROGRAM, QByteArrayList(), desktop.environment());
    }
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
    XClient late(desktop.display());
    ASSERT_TRUE(late.takeRequestsToShow());
    start();
    XClient::Window shown = XCB_NONE;
    ASSERT_TRUE(soon([&] { return (shown = late.windowToShow()) != XCB_NONE; }));
    ASSERT_EQ(corvatto({"--toggle"}), 0);
    ASSERT_TRUE(soon([&] { return late.hiddenWindow() == shown; }));
    late.show(shown);
    ASSERT_TRUE(soon([&] { return late.keyboard() == shown; })) << "the program has not noticed";
    EXPECT_EQ(corvatto({"--toggle"}), 0); // to show what Qt believes hidden
    EXPECT_TRUE(soon([this] { return setting("corvattoHistoryWindowOpenCount") == 2; }));
    EXPECT_EQ(panel(), shown);
    desktop.key("Escape");
    EXPECT_TRUE(soonHidden());
}

TEST_F(WindowManagerTest, ABarTakesSpaceOfItsMonitorOnly) {
    run("xrandr --setmonitor left 640/170x1100/291+0+0 screen");
    run("xrandr --setmonitor right 640/170x1100/291+640+0 none");
    x.click({1000, 100});
    launch();
    EXPECT_TRUE(soonAt({640, 660, 640, 440}));
    const auto bar = x.createWindow({640, 1040, 640, 60}, "Bar");
    XConnection client(desktop.display());
    const auto keepFree = [&](const QList<quint32>& strut) {
        client.put(bar, client.atom("_NET_WM_STRUT_PARTIAL"), XCB_ATOM_CARDINAL, strut);
        client.sync();
    };
    keepFree({0, 0, 0, 60, 0, 0, 0, 0, 0, 0, 640, 1279});
    EXPECT_TRUE(soonAt({640, 603, 640, 437}));
    keepFree({50, 0, 0, 0, 0, 1099, 0, 0, 0, 0, 0, 0}); // at the left of the other monitor
    EXPECT_TRUE(soonAt({640, 660, 640, 440}));
    ASSERT_TRUE(soonToggled("super+shift+v"));
    x.click({300, 100});
    showPanel();
    EXPECT_TRUE(soonAt({50, 660, 590, 440}));
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
