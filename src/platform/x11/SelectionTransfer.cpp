#include "platform/x11/SelectionTransfer.h"

#include <utility>

namespace corvatto {
namespace {

// How much of a property one request reads, in 32-bit words. Bounds what a reply can make us hold at once.
constexpr quint32 wordsPerRead = 1u << 18; // 1 MiB

} // namespace

SelectionTransfer::SelectionTransfer(XcbConnection& connection, const Request& request, Done done)
    : m_connection(connection), m_request(request), m_done(std::move(done)),
      m_self(std::make_shared<SelectionTransfer*>(this)) {
    m_connection.addListener(*this);
    m_silence.setSingleShot(true);
    m_silence.setInterval(m_request.silenceLimit);
    m_silence.callOnTimeout([this] { finish(TransferOutcome::timedOut); });
    m_silence.start();
    xcb_delete_property(m_connection.raw(), m_request.requestor, m_request.property);
    xcb_convert_selection(m_connection.raw(), m_request.requestor, m_request.selection, m_request.target,
                          m_request.property, m_request.time);
    m_connection.flush();
}

SelectionTransfer::~SelectionTransfer() {
    m_connection.removeListener(*this);
}

void SelectionTransfer::handleEvent(const xcb_generic_event_t& event) {
    const int type = event.response_type & 0x7F;
    if (type == XCB_SELECTION_NOTIFY && m_state == State::asked) {
        const auto& notify = reinterpret_cast<const xcb_selection_notify_event_t&>(event);
        if (notify.requestor != m_request.requestor || notify.selection != m_request.selection ||
            notify.target != m_request.target) {
            return;
        }
        if (notify.property == m_request.property) {
            readProperty();
        } else if (notify.property == XCB_ATOM_NONE && notify.time == m_request.time) {
            // The time tells a refusal of this request from a late one of a request that was given up.
            finish(TransferOutcome::refused);
        }
    } else if (type == XCB_PROPERTY_NOTIFY) {
        const auto& notify = reinterpret_cast<const xcb_property_notify_event_t&>(event);
        if (notify.window != m_request.requestor || notify.atom != m_request.property ||
            notify.state != XCB_PROPERTY_NEW_VALUE) {
            return;
        }
        if (m_state == State::waitingForPiece) {
            readProperty();
        } else if (m_state == State::reading) {
            // The owner was told to go on when the server carried out our read, and may be faster than the
            // reply to it gets here.
            m_isNextPieceAnnounced = true;
        }
    }
}

void SelectionTransfer::ownerGone() {
    // What has reached the server is being read; only an owner that still had to act leaves the transfer
    // hanging.
    if (m_state == State::asked || m_state == State::waitingForPiece) {
        finish(TransferOutcome::refused);
    }
}

void SelectionTransfer::readProperty() {
    m_state = State::reading;
    // Deleting happens with the read that takes the last of the property, and tells the owner to go on.
    const auto cookie = xcb_get_property(m_connection.raw(), 1, m_request.requestor, m_request.property,
                                         XCB_GET_PROPERTY_TYPE_ANY, m_offset, wordsPerRead);
    m_connection.whenReplied(cookie.sequence, [self = std::weak_ptr(m_self)](const void* reply) {
        if (const auto alive = self.lock()) {
            (*alive)->handleProperty(static_cast<const xcb_get_property_reply_t*>(reply));
        }
    });
    m_connection.flush();
}

void SelectionTransfer::handleProperty(const xcb_get_property_reply_t* reply) {
    if (m_state != State::reading) {
        return;
    }
    if (reply == nullptr) {
        finish(TransferOutcome::refused);
        return;
    }
    m_silence.start();

    if (reply->type == XCB_ATOM_NONE) {
        // There is no such property. An owner that replaces a piece before we have read it announces two
        // pieces where there is one. In any other case something is missing: the end would be an empty
        // property.
        if (m_incremental && m_offset == 0) {
            waitForPiece();
        } else {
            finish(TransferOutcome::refused);
        }
        return;
    }
    if (!m_incremental && reply->type == m_connection.atom("INCR")) {
        m_incremental = true;
        // The owner announces a lower bound of the size; a liar is caught while the pieces come in.
        if (xcb_get_property_value_length(reply) >= 4 &&
            *static_cast<const quint32*>(xcb_get_property_value(reply)) > m_request.byteLimit) {
            finish(TransferOutcome::tooLarge);
        } else {
            waitForPiece();
        }
        return;
    }

    const bool lastPiece = reply->value_len == 0 && reply->bytes_after == 0 && m_offset == 0;
    if (!append(*reply)) {
        finish(TransferOutcome::tooLarge);
    } else if (reply->bytes_after > 0) {
        m_offset += wordsPerRead;
        readProperty();
    } else if (!m_incremental || lastPiece) {
        finish(TransferOutcome::complete);
    } else {
        m_offset = 0;
        waitForPiece();
    }
}

void SelectionTransfer::waitForPiece() {
    m_state = State::waitingForPiece;
    if (std::exchange(m_isNextPieceAnnounced, false)) {
        readProperty();
    }
}

bool SelectionTransfer::append(const xcb_get_property_reply_t& reply) {
    const int length = xcb_get_property_value_length(&reply);
    if (m_bytes.size() + length + qint64{reply.bytes_after} > m_request.byteLimit) {
        return false;
    }
    m_bytes.append(static_cast<const char*>(xcb_get_property_value(&reply)), length);
    m_type = reply.type;
    return true;
}

void SelectionTransfer::finish(TransferOutcome outcome) {
    if (m_state == State::ended) {
        return;
    }
    m_state = State::ended;
    m_silence.stop();
    if (outcome != TransferOutcome::complete) {
        xcb_delete_property(m_connection.raw(), m_request.requestor, m_request.property);
        m_bytes = QByteArray();
    } else if (m_bytes.isNull()) {
        m_bytes = QByteArray("");
    }
    // The callback may destroy this object.
    const Done done = std::move(m_done);
    done({outcome, std::move(m_bytes), m_type});
}

} // namespace corvatto
