// The X program that owns the clipboard of a Wayland session's X server.
//
// Compositors pass its content on to Wayland programs. Some drop the mark of secrecy on the way, and to them
// its exit looks like a clear, so both are asked of the X server itself.
#pragma once

#include "platform/wayland/OwnerLife.h"
#include "platform/x11/SelectionSource.h"

#include <memory>

namespace corvatto {

// Main thread.
class XwaylandOwner : public OwnerLife, public XcbEventListener {
public:
    XwaylandOwner(XcbConnection::Prepared prepared);
    ~XwaylandOwner() override;

    // Calls `done` with whether it marks its content as secret. So it does when it does not answer within the
    // limit.
    void askWhetherSecret(std::chrono::milliseconds silenceLimit, std::function<void(bool isSecret)> done);

    void handleEvent(const xcb_generic_event_t& event) override;

private:
    XcbConnection m_connection;
    TransferProperties m_properties;
    xcb_window_t m_requestor;
    quint8 m_selectionNotify; // the type of the event
    std::unique_ptr<SelectionSource> m_source;
};

// Finds that program. Main thread.
class XwaylandOwners : public QObject {
    Q_OBJECT

public:
    using Found = std::function<void(std::shared_ptr<XwaylandOwner> owner)>;

    // Calls `found` from the event loop; with null when no X program owns the clipboard. Never called when
    // the X server does not answer, or when the next search begins before.
    //
    // Does not start the X server where the compositor starts it for the first program that connects to it:
    // without any program that has done so there is no owner, and we do not connect either.
    void find(Found found);

private:
    void look();

    Found m_found;
    bool m_isLooking = false;
    bool m_looksAgain = false;
};

} // namespace corvatto
