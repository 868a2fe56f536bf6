// The tray of a desktop that has no other than one on the session bus, as in Wayland sessions.
#pragma once

#include "platform/Tray.h"
#include "platform/freedesktop/StatusNotifierHost.h"

namespace corvatto {

// Main thread.
class StatusNotifierTray : public Tray {
    Q_OBJECT

public:
    StatusNotifierTray();

    void startWatching() override;

    // Opens nothing: a Wayland client can place a menu only at a window of its own, and the icon's is the
    // tray's.
    bool openMenu(QMenu& menu) override;

private:
    StatusNotifierHost m_host;
    bool m_isAvailable = false;
};

} // namespace corvatto
