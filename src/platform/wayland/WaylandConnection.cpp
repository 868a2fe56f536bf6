#include "platform/wayland/WaylandConnection.h"

#include <algorithm>
#include <cerrno>
#include <utility>

namespace corvatto {

struct WaylandConnection::Listeners {
    static void global(void* data, wl_registry* /*registry*/, uint32_t name, const char* interface,
                       uint32_t version) {
        auto& self = *static_cast<WaylandConnection*>(data);
        self.m_globals.insert_or_assign(name, Global{interface, version});
        self.followSeat();
    }
    static void globalRemoved(void* data, wl_registry* /*registry*/, uint32_t name) {
        auto& self = *static_cast<WaylandConnection*>(data);
        self.m_globals.erase(name);
        self.followSeat();
    }
    static constexpr wl_registry_listener registry{global, globalRemoved};

    static void synced(void* data, wl_callback* callback, uint32_t /*serial*/) {
        auto sync = static_cast<WaylandConnection*>(data)->m_syncs.extract(callback);
        wl_callback_destroy(callback);
        sync.mapped()();
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
    for (const auto& [callback, done] : m_syncs) {
        wl_callback_destroy(callback);
    }
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
    return true;
}

WaylandConnection::Globals::const_iterator WaylandConnection::first(const QByteArray& interface) const {
    return std::find_if(m_globals.cbegin(), m_globals.cend(),
                        [&](const auto& global) { return global.second.interface == interface; });
}

// Seats come and go, as with the session of a remote desktop.
void WaylandConnection::followSeat() {
    const auto global = first("wl_seat");
    const quint32 name = global == m_globals.cend() ? 0 : global->first;
    if (name == m_seatName) {
        return;
    }
    wl_seat* const before = m_seat;
    m_seatName = name;
    m_seat = bind<wl_seat>("wl_seat", wl_seat_interface, 1);
    Q_EMIT seatChanged();
    if (before != nullptr) {
        wl_seat_destroy(before);
    }
    flush();
}

quint32 WaylandConnection::version(const QByteArray& interface) const {
    const auto global = first(interface);
    return global == m_globals.cend() ? 0 : global->second.version;
}

void* WaylandConnection::bindGlobal(const QByteArray& interface, const wl_interface& description,
                                    quint32 version) {
    const auto global = first(interface);
    if (global == m_globals.cend()) {
        return nullptr;
    }
    const quint32 agreed = std::min(global->second.version, version);
    // Not wl_registry_bind(), which sends the name in the description.
    return wl_proxy_marshal_flags(reinterpret_cast<wl_proxy*>(m_registry), WL_REGISTRY_BIND, &description,
                                  agreed, 0, global->first, interface.constData(), agreed, nullptr);
}

void WaylandConnection::sync(std::function<void()> done) {
    wl_callback* const callback = wl_display_sync(m_display);
    m_syncs.emplace(callback, std::move(done));
    wl_callback_add_listener(callback, &Listeners::callback, this);
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
