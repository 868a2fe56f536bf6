#include "BenchDesktop.h"

#include "WaylandPixels.h"

#include "endtoend/SwayDesktop.h"
#include "endtoend/X11Desktop.h"

#include <QMap>
#include <QStandardPaths>

#include <xcb/xtest.h>

#include <stdexcept>

namespace corvatto::bench {

namespace {

class X11BenchDesktop : public BenchDesktop {
public:
    test::TestDesktop& desktop() override { return m_desktop; }

    void press(const QByteArray& keys) override {
        // By their places on the keyboard, as X numbers them.
        static const QMap<QByteArray, quint8> codes{{"Escape", 9}, {"BackSpace", 22}, {"Return", 36},
                                                    {"h", 43},     {"shift", 50},     {"z", 52},
                                                    {"v", 55},     {"super", 133}};
        for (const quint8 type : {quint8{XCB_KEY_PRESS}, quint8{XCB_KEY_RELEASE}}) {
            for (const QByteArray& key : keys.split('+')) {
                xcb_test_fake_input(m_input.raw(), type, codes[key], XCB_CURRENT_TIME, XCB_NONE, 0, 0, 0);
            }
        }
        xcb_flush(m_input.raw());
    }

    QRgb pixelAt(QPoint position) override {
        return m_desktop.client().picture({position, QSize(1, 1)}).pixel(0, 0);
    }

private:
    test::X11Desktop m_desktop{{.screen = size}};
    test::XConnection m_input{m_desktop.display()};
};

class SwayBenchDesktop : public BenchDesktop {
public:
    SwayBenchDesktop() {
        // A pixel can be looked at once a frame, and sixty frames a second would hide what is measured.
        test::Process mode("swaymsg", {"output HEADLESS-1 mode --custom 1920x1080@1000Hz"},
                           m_desktop.environment());
        if (mode.exitStatus() != 0) {
            throw std::runtime_error("sway keeps to sixty frames a second");
        }
    }

    test::TestDesktop& desktop() override { return m_desktop; }
    void press(const QByteArray& keys) override { m_desktop.key(keys); }
    QRgb pixelAt(QPoint position) override { return m_pixels.at(position); }

private:
    test::SwayDesktop m_desktop{{.screen = size}};
    WaylandPixels m_pixels{m_desktop.home() + "/runtime/wayland-1"};
};

} // namespace

std::unique_ptr<BenchDesktop> BenchDesktop::open(Kind kind) {
    if (kind == Kind::X11) {
        return std::make_unique<X11BenchDesktop>();
    }
    return std::make_unique<SwayBenchDesktop>();
}

bool BenchDesktop::isInstalled(Kind kind) {
    return kind == Kind::X11 || !QStandardPaths::findExecutable(QStringLiteral("sway")).isEmpty();
}

} // namespace corvatto::bench
