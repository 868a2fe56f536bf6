#include "platform/wayland/WaylandConnection.h"

#include <algorithm>
#include <cerrno>
#include <string>
#include <unordered_map>
#include <utility>

namespace corvatto {

struct WaylandConnection::Listeners {
    static void global(void* self, wl_registry* /*registry*/, uint32_t name, const char* interface,
                       uint32_t version) {
        auto& globals = static_cast<WaylandConnection*>(self)->m_globals;
        if (!globals.contains(interface)) {
            globals.insert(interface, {name, version});
        }
    }
    static void globalRemoved(void* self, wl_registry* /*registry*/, uint32_t name) {
        static_cast<WaylandConnection*>(self)->m_globals.removeIf(
            [name](const auto& entry) { return entry.value().name == name; });
    }
    static constexpr wl_registry_listener registry{global, globalRemoved};

    static void synced(void* data, wl_callback* callback, uint32_t /*serial*/) {
        const std::unique_ptr<std::function<void()>> done(static_cast<std::function<void()>*>(data));
        wl_callback_destroy(callback);
        (*done)();
    }
    static constexpr wl_callback_listener callback{synced};
};

std::unique_ptr<WaylandConnection> WaylandConnection::open() {
    wl_display* display = wl_display_connect(nullptr);
    if (display == nullptr) {
        return nullptr;
    }
    std::unique_ptr<WaylandConnection> connection(new WaylandConnection(display));
    return connection->readGlobals() ? std::move(connection) : nullptr;
}

WaylandConnection::WaylandConnection(wl_display* display)
    : m_display(display), m_readable(wl_display_get_fd(display), QSocketNotifier::Read),
      m_writable(wl_display_get_fd(display), QSocketNotifier::Write) {
    m_writable.setEnabled(false);
    connect(&m_readable, &QSocketNotifier::activated, this, &WaylandConnection::pump);
    connect(&m_writable, &QSocketNotifier::activated, this, &WaylandConnection::flush);
}

WaylandConnection::~WaylandConnection() {
    m_readable.setEnabled(false);
    m_writable.setEnabled(false);
    if (m_seat != nullptr) {
        wl_seat_destroy(m_seat);
    }
    if (m_registry != nullptr) {
        wl_registry_destroy(m_registry);
    }
    wl_display_disconnect(m_display);
}

bool WaylandConnection::readGlobals() {
    m_registry = wl_display_get_registry(m_display);
    wl_registry_add_listener(m_registry, &Listeners::registry, this);
    if (wl_display_roundtrip(m_display) < 0) {
        return false;
    }
    m_seat = bind<wl_seat>("wl_seat", wl_seat_interface, 1);
    flush();
    return true;
}

quint32 WaylandConnection::version(const QByteArray& interface) const {
    return m_globals.value(interface, {0, 0}).version;
}

void* WaylandConnection::bindGlobal(const QByteArray& interface, const wl_interface& description,
                                    quint32 version) {
    const auto global = m_globals.constFind(interface);
    if (global == m_globals.constEnd()) {
        return nullptr;
    }
    // The wire names the interface only here. libwayland keeps pointers to descriptions and names for ever.
    static std::unordered_map<std::string, wl_interface> renamed;
    const auto [entry, isNew] = renamed.try_emplace(interface.toStdString(), description);
    entry->second.name = entry->first.c_str();
    return wl_registry_bind(m_registry, global->name, &entry->second, std::min(global->version, version));
}

void WaylandConnection::sync(std::function<void()> done) {
    wl_callback_add_listener(wl_display_sync(m_display), &Listeners::callback,
                             new std::function<void()>(std::move(done)));
    flush();
}

void WaylandConnection::pump() {
    while (wl_display_prepare_read(m_display) != 0) {
        if (wl_display_dispatch_pending(m_display) < 0) {
            return fail();
        }
    }
    // Does not wait, because there is something to read; and reads some kilobytes at most, so that a busy
    // compositor does not keep the event loop.
    if (wl_display_read_events(m_display) < 0 || wl_display_dispatch_pending(m_display) < 0) {
        return fail();
    }
    flush();
}

void WaylandConnection::flush() {
    if (m_hasFailed) {
        return;
    }
    const int sent = wl_display_flush(m_display);
    if (sent < 0 && errno != EAGAIN) {
        // EPIPE: the reason may still be there to be read, so reading is what tells of the end.
        m_writable.setEnabled(false);
        return;
    }
    m_writable.setEnabled(sent < 0);
}

void WaylandConnection::fail() {
    if (!std::exchange(m_hasFailed, true)) {
        m_readable.setEnabled(false);
        m_writable.setEnabled(false);
        Q_EMIT disconnected();
    }
}

} // namespace corvatto
