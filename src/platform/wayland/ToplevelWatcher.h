// Knows which application's window is in front, as far as the compositor tells its clients. The compositors
// that tell it at all do so in one of two protocols; each has an implementation.
#pragma once

#include <QString>

#include <memory>

namespace corvatto {

class WaylandConnection;

// Main thread.
class ToplevelWatcher {
public:
    // A window with a place of its own on the desktop, of whichever program. Panels, menus and the desktop
    // itself are none.
    struct Toplevel {
        QString applicationId; // by convention its desktop entry, under XWayland the window's class; may be
                               // empty
        bool isActive = false; // has the keyboard, or would have it if no panel or lock screen had
    };

    // Null when the compositor offers neither protocol, or not to this program. The connection outlives the
    // watcher, and delivers the windows that are already there from the event loop.
    static std::unique_ptr<ToplevelWatcher> create(WaylandConnection& connection);

    ToplevelWatcher() = default;
    virtual ~ToplevelWatcher() = default;
    ToplevelWatcher(const ToplevelWatcher&) = delete;
    ToplevelWatcher& operator=(const ToplevelWatcher&) = delete;

    // The window that was activated last, which need not be active any more. Null when it has been closed,
    // and while none has been active. Valid until the event loop runs again.
    const Toplevel* lastActive() const { return m_lastActive; }

protected:
    // `toplevel` stays where it is until it is forgotten.
    void setActive(Toplevel& toplevel, bool isActive);
    void forget(const Toplevel& toplevel);

private:
    const Toplevel* m_lastActive = nullptr;
};

} // namespace corvatto
