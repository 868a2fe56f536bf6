// Asks the desktop's clipboard manager, if there is one, to take over what this program offers, so that it
// outlives the program.
#pragma once

#include "platform/x11/XcbConnection.h"

#include <QTimer>

#include <functional>

namespace corvatto {

// The manager reads the content like any other program does, so the event loop has to run until `done` is
// called: when the manager has answered, or after two seconds, or at once when there is none. Main thread.
class ClipboardManagerSave : public XcbEventListener {
public:
    // `owner` is the window that owns the clipboard.
    ClipboardManagerSave(XcbConnection& connection, xcb_window_t owner, std::function<void()> done);
    ~ClipboardManagerSave() override;

    void handleEvent(const xcb_generic_event_t& event) override;

private:
    void finish();

    XcbConnection& m_connection;
    xcb_window_t m_owner;
    xcb_atom_t m_manager;
    std::function<void()> m_done;
    QTimer m_replyTimeout;
};

} // namespace corvatto
