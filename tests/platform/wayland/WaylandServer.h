// A Wayland server of a test's own, served by the event loop of the test. What it offers, the test adds.
#pragma once

#include "platform/wayland/WaylandConnection.h"

#include <QSocketNotifier>

#include <wayland-server-core.h>

#include <atomic>
#include <memory>
#include <thread>

#include <sys/socket.h>

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

    // A connection of the program's. Opening it waits for the server, so a thread serves in that time.
    std::unique_ptr<WaylandConnection> connect() {
        int ends[2];
        if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0) {
            return nullptr;
        }
        wl_client_create(display, ends[0]);
        qputenv("WAYLAND_SOCKET", QByteArray::number(ends[1]));
        std::atomic_bool isOpen = false;
        std::thread server([this, &isOpen] {
            while (!isOpen) {
                serve(1);
            }
        });
        auto connection = WaylandConnection::open();
        isOpen = true;
        server.join();
        return connection;
    }

    // Sends what has been announced.
    void flush() { wl_display_flush_clients(display); }

private:
    void serve(int milliseconds) {
        wl_event_loop_dispatch(wl_display_get_event_loop(display), milliseconds);
        flush();
    }

    QSocketNotifier m_readable;
};

} // namespace corvatto::test
