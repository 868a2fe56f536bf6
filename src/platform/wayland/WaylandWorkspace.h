// The application in front on a Wayland desktop, as the compositor tells it.
#pragma once

#include "platform/freedesktop/FreedesktopWorkspace.h"
#include "platform/wayland/ToplevelWatcher.h"

namespace corvatto {

// Main thread.
class WaylandWorkspace : public FreedesktopWorkspace {
public:
    // The connection outlives the workspace. Where the compositor does not tell which window is in front, the
    // names are empty.
    explicit WaylandWorkspace(WaylandConnection& connection);

    bool openURL(const QUrl& url) override;

    // The name of the application that the user copied in, at the moment that the clipboard changes hands.
    // `isOwnCopy` for a copy made in one of this program's windows, which is this program's. Else that of the
    // active window; or, while a window of ours has the keyboard that leaves none active, as the panel does,
    // of the one that was active before. Empty when there is none, when it has been closed, and when it is
    // one of ours.
    QString nameOfCopySource(bool isOwnCopy);

private:
    std::unique_ptr<ToplevelWatcher> m_toplevels; // null where the compositor does not tell
};

} // namespace corvatto
