// One conversion of a selection: asks its owner for a target and collects the answer, in pieces when the
// owner sends it incrementally (INCR), with a limit on its size and on the owner's silence, both held while
// it runs.
#pragma once

#include "platform/ClipboardReadPlan.h"
#include "platform/x11/XcbConnection.h"

#include <QTimer>

#include <chrono>
#include <functional>

namespace corvatto {

// Main thread. The transfer ends with exactly one call of its callback, unless it is destroyed before;
// whatever the owner sends after either is ignored.
class SelectionTransfer : public XcbEventListener {
public:
    struct Request {
        xcb_window_t requestor; // ours, with PropertyChange selected
        xcb_atom_t selection;
        xcb_atom_t target;
        xcb_atom_t property; // unused by any other transfer under way
        xcb_timestamp_t time;
        qint64 byteLimit;
        std::chrono::milliseconds silenceLimit;
    };

    // The bytes are null unless the outcome is complete; the type is that of their property.
    struct Result {
        TransferOutcome outcome;
        QByteArray bytes;
        xcb_atom_t type = XCB_ATOM_NONE;
    };
    using Done = std::function<void(Result result)>;

    SelectionTransfer(XcbConnection& connection, const Request& request, Done done);
    ~SelectionTransfer() override;

    void handleEvent(const xcb_generic_event_t& event) override;

    // Ends the transfer because its owner has gone.
    void ownerGone();

private:
    enum class State { asked, reading, waitingForPiece, ended };

    void readProperty();
    void handleProperty(const xcb_get_property_reply_t* reply);
    void waitForPiece();
    bool append(const xcb_get_property_reply_t& reply);
    void finish(TransferOutcome outcome);

    XcbConnection& m_connection;
    Request m_request;
    Done m_done;
    State m_state = State::asked;
    bool m_incremental = false;
    bool m_isNextPieceAnnounced = false;
    quint32 m_offset = 0; // words of the current property already read
    QByteArray m_bytes;
    xcb_atom_t m_type = XCB_ATOM_NONE;
    QTimer m_silence;
    // Replies may arrive after this object has gone; they hold a weak reference to this.
    std::shared_ptr<SelectionTransfer*> m_self;
};

} // namespace corvatto
