// A connection to the compositor that is the program's own, apart from Qt's, served by the main event loop.
//
// Opening it waits for the compositor; after that nothing does: what the compositor says arrives as events,
// and what it is too busy to read is sent when it reads again.
#pragma once

#include <QByteArray>
#include <QObject>
#include <QSocketNotifier>

#include <wayland-client.h>

#include <functional>
#include <map>
#include <memory>
#include <unordered_map>

namespace corvatto {

// Main thread.
class WaylandConnection : public QObject {
    Q_OBJECT

public:
    // Connects to the compositor of $WAYLAND_DISPLAY, or of $WAYLAND_SOCKET. Null when there is none. Events
    // arrive only if there is an application object already.
    static std::unique_ptr<WaylandConnection> open();
    ~WaylandConnection() override;

    wl_display* raw() const { return m_display; }

    // The version in which the compositor offers an interface; 0 when it does not.
    quint32 version(const QByteArray& interface) const;

    // Binds a global, in the lower of the version that is offered and of `version`. Null when it is not
    // offered. `interface` may be another name than the one in `description`, for a protocol that was renamed
    // and is the same on the wire otherwise. The caller owns the proxy.
    template <typename T>
    T* bind(const QByteArray& interface, const wl_interface& description, quint32 version) {
        return static_cast<T*>(bindGlobal(interface, description, version));
    }

    // The seat that was announced first, of those that there are; null without any.
    wl_seat* seat() const { return m_seat; }

    // Calls `done` when the compositor has handled all requests so far, and the events that it had sent by
    // then are delivered. Never called when the connection ends before.
    void sync(std::function<void()> done);

    // Sends what has been requested.
    void flush();

Q_SIGNALS:
    // There is another seat(), or none any more. The one before is destroyed afterwards.
    void seatChanged();

    // The compositor is gone, or has ended the connection for an error. Nothing works after this.
    void disconnected();

private:
    struct Global {
        QByteArray interface;
        quint32 version;
    };
    using Globals = std::map<quint32, Global>; // by name: in the order of announcement
    struct Listeners;

    explicit WaylandConnection(wl_display* display);
    bool readGlobals();
    Globals::const_iterator first(const QByteArray& interface) const;
    void followSeat();
    void* bindGlobal(const QByteArray& interface, const wl_interface& description, quint32 version);
    void pump();
    void fail();

    wl_display* m_display;
    wl_registry* m_registry = nullptr;
    wl_seat* m_seat = nullptr;
    quint32 m_seatName = 0; // of the global
    Globals m_globals;
    std::unordered_map<wl_callback*, std::function<void()>> m_syncs; // not answered yet
    QSocketNotifier m_readable;
    QSocketNotifier m_writable;
    bool m_hasFailed = false;
};

} // namespace corvatto
