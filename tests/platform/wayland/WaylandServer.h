// A Wayland server of a test's own, served by the event loop of the test. What it offers, the test adds.
#pragma once

#include "platform/wayland/WaylandConnection.h"

#include <QSocketNotifier>
#include <QTemporaryDir>

#include <wayland-server-core.h>

#include <atomic>
#include <memory>
#include <thread>

namespace corvatto::test {

class WaylandServer {
public:
    WaylandServer()
        : display(wl_display_create()),
          m_readable(wl_event_loop_get_fd(wl_display_get_event_loop(display)), QSocketNotifier::Read) {
        QObject::connect(&m_readable, &QSocketNotifier::activated, [this] { serve(0); });
    }
    ~WaylandServer() {
        m_readable.setEnabled(false);
        wl_display_destroy_clients(display);
        wl_display_destroy(display);
    }
    WaylandServer(const WaylandServer&) = delete;
    WaylandServer& operator=(const WaylandServer&) = delete;

    wl_display* const display;

    // Does what waits for the server, so a thread serves in that time.
    template <typename Work>
    auto during(const Work& work) {
        std::atomic_bool isDone = false;
        std::thread server([this, &isDone] {
            while (!isDone) {
                serve(1);
            }
        });
        auto result = work();
        isDone = true;
        server.join();
        return result;
    }

    // A connection of the program's.
    std::unique_ptr<WaylandConnection> connect() {
        listen();
        return during(WaylandConnection::open);
    }

    // Lets whoever likes connect to $WAYLAND_DISPLAY from now on.
    void listen() {
        qputenv("XDG_RUNTIME_DIR", m_sockets.path().toUtf8());
        qputenv("WAYLAND_DISPLAY", wl_display_add_socket_auto(display));
    }

    // Sends what has been announced.
    void flush() { wl_display_flush_clients(display); }

private:
    void serve(int milliseconds) {
        wl_event_loop_dispatch(wl_display_get_event_loop(display), milliseconds);
        flush();
    }

    QTemporaryDir m_sockets;
    QSocketNotifier m_readable;
};

} // namespace corvatto::test
