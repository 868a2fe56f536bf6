// The clipboard of an X11 desktop.
//
// XFixes announces each change of ownership; the new content is then collected asynchronously. When the owner
// of the clipboard exits, its content, as far as it was collected, is offered again, and no count rises: for
// the user, nothing has changed. After an explicit clear nothing comes back, and of a secret nothing was ever
// collected.
#pragma once

#include "platform/SnapshotPasteboard.h"
#include "platform/x11/ClipboardManagerSave.h"
#include "platform/x11/SelectionOwner.h"
#include "platform/x11/SelectionSource.h"

#include <xcb/xfixes.h>

namespace corvatto {

// Main thread.
class X11Pasteboard : public SnapshotPasteboard, public XcbEventListener {
public:
    // The display name of the application that was copied in, when that window takes the clipboard over.
    using NameOfSource = std::function<QString(xcb_window_t owner)>;

    // The connection, and what the function refers to, outlive the pasteboard.
    X11Pasteboard(XcbConnection& connection, NameOfSource nameOfSource,
                  const ClipboardReadLimits& limits = {});
    ~X11Pasteboard() override;

    void handOver(std::function<void()> done) override;

    void handleEvent(const xcb_generic_event_t& event) override;

private:
    // An ownership of the selection. The same window may own it again at a later time, with other content.
    struct Ownership {
        xcb_window_t owner = XCB_NONE;
        xcb_timestamp_t since = XCB_CURRENT_TIME;
        bool operator==(const Ownership&) const = default;
    };

    void watchSelections();
    void readInitialContent();
    void ownershipChanged(const xcb_xfixes_selection_notify_event_t& event);
    void announced(const Ownership& ownership);
    void readFrom(const Ownership& ownership, Meaning meaning);
    bool isOwnedByManager() const;
    void ownerGone();
    void offerAgain();
    void offer(const ClipboardContent& content) override;
    void overtaken() override;
    void wasRead() override;

    XcbConnection& m_connection;
    NameOfSource m_nameOfSource;
    xcb_atom_t m_selection;
    xcb_atom_t m_managerSelection;
    xcb_window_t m_requestor;
    TransferProperties m_properties;
    quint8 m_firstXFixesEvent = 0;
    SelectionOwner m_owner;

    Ownership m_ownership;             // the last one announced
    xcb_window_t m_manager = XCB_NONE; // which the desktop's clipboard manager owns its own selection with
    bool m_isOwnerGone = false;        // the owner that was announced last has exited
    QTimer m_offerAgain;
    QTimer m_rereading; // after the same ownership was announced again
    std::unique_ptr<ClipboardManagerSave> m_save;
};

} // namespace corvatto
