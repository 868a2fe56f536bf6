#include "platform/x11/SelectionOwner.h"

#include <QPointer>

#include <algorithm>
#include <chrono>

namespace corvatto {
namespace {

// Larger content goes in pieces of this size: small enough that one piece costs no frame, on either side.
constexpr qsizetype wantedBytesPerPiece = qsizetype{256} << 10;
constexpr qsizetype requestOverhead = 64; // bytes of a request beside the property that it carries
constexpr std::chrono::seconds requestorSilence{30};

constexpr quint32 mostPairs = 64; // of a MULTIPLE request

qsizetype bytesPerPiece(xcb_connection_t* connection) {
    const qsizetype longestRequest = qsizetype{xcb_get_maximum_request_length(connection)} * 4;
    return std::min(wantedBytesPerPiece, longestRequest - requestOverhead);
}

} // namespace

SelectionOwner::SelectionOwner(XcbConnection& connection, xcb_atom_t selection)
    : m_connection(connection), m_selection(selection),
      m_window(connection.createMessageWindow(XCB_EVENT_MASK_PROPERTY_CHANGE)),
      m_bytesPerPiece(bytesPerPiece(connection.raw())) {
    m_connection.addListener(*this);
}

SelectionOwner::~SelectionOwner() {
    m_connection.removeListener(*this);
    xcb_destroy_window(m_connection.raw(), m_window);
    m_connection.flush();
}

void SelectionOwner::offer(const ClipboardContent& content) {
    setContent(content);
    takeOver();
    m_connection.flush();
}

bool SelectionOwner::offerIfUnowned(const ClipboardContent& content) {
    // Between looking and taking, another program may copy something; the grab keeps both together.
    xcb_connection_t* raw = m_connection.raw();
    xcb_grab_server(raw);
    const XcbPointer<xcb_get_selection_owner_reply_t> owner(
        xcb_get_selection_owner_reply(raw, xcb_get_selection_owner(raw, m_selection), nullptr));
    const bool isFree = owner && owner->owner == XCB_NONE;
    if (isFree) {
        setContent(content);
        takeOver();
    }
    xcb_ungrab_server(raw);
    m_connection.flush();
    return isFree;
}

void SelectionOwner::takeOver() {
    // The server's own current time: it accepts no older one, and we have seen no event whose time would do.
    xcb_set_selection_owner(m_connection.raw(), m_window, m_selection, XCB_CURRENT_TIME);
    ++m_pendingTakeovers;
}

void SelectionOwner::takeoverAnnounced(xcb_timestamp_t time) {
    --m_pendingTakeovers;
    m_since = time;
}

void SelectionOwner::setContent(const ClipboardContent& content) {
    m_since = XCB_CURRENT_TIME;
    m_flavours = std::make_shared<OfferedFlavours>(*this, content);
    for (std::size_t i = 0; i < m_flavours->size(); ++i) {
        m_connection.atom((*m_flavours)[i].target); // asked for now, and not in the middle of a paste
        m_connection.atom((*m_flavours)[i].type);
    }
}

void SelectionOwner::handleEvent(const xcb_generic_event_t& event) {
    switch (event.response_type & 0x7F) {
    case XCB_SELECTION_REQUEST: {
        const auto& request = reinterpret_cast<const xcb_selection_request_event_t&>(event);
        if (request.owner == m_window) {
            answer(request);
        }
        break;
    }
    case XCB_SELECTION_CLEAR: {
        // Told before a takeover of ours is announced, it is the end of an earlier ownership.
        const auto& clear = reinterpret_cast<const xcb_selection_clear_event_t&>(event);
        if (clear.owner == m_window && clear.selection == m_selection && !hasPendingTakeover()) {
            m_flavours.reset(); // transfers under way keep their own bytes
        }
        break;
    }
    case XCB_PROPERTY_NOTIFY: {
        const auto& notified = reinterpret_cast<const xcb_property_notify_event_t&>(event);
        if (notified.state != XCB_PROPERTY_DELETE) {
            break;
        }
        const auto transfer =
            std::find_if(m_incremental.begin(), m_incremental.end(), [&](const Incremental& each) {
                return each.requestor == notified.window && each.property == notified.atom;
            });
        if (transfer != m_incremental.end()) {
            sendNextPiece(transfer);
        }
        break;
    }
    case XCB_DESTROY_NOTIFY:
        forgetRequestor(reinterpret_cast<const xcb_destroy_notify_event_t&>(event).window);
        break;
    default:
        break;
    }
}

// A request of an earlier time is about what was on the clipboard then. Times wrap around.
bool SelectionOwner::isOwnedSince(xcb_timestamp_t time) const {
    return time == XCB_CURRENT_TIME || m_since == XCB_CURRENT_TIME ||
           static_cast<qint32>(time - m_since) >= 0;
}

void SelectionOwner::answer(const xcb_selection_request_event_t& request) {
    // Requestors older than the convention leave the property to the target's name.
    const xcb_atom_t property = request.property == XCB_ATOM_NONE ? request.target : request.property;
    if (request.selection != m_selection || !isOwnedSince(request.time)) {
        notify(request, XCB_ATOM_NONE);
    } else if (request.target == m_connection.atom("MULTIPLE") && request.property != XCB_ATOM_NONE) {
        answerMultiple(request);
    } else {
        convert(request.requestor, request.target, property, [this, request, property](bool isConverted) {
            notify(request, isConverted ? property : xcb_atom_t{XCB_ATOM_NONE});
        });
    }
}

void SelectionOwner::convert(xcb_window_t requestor, xcb_atom_t target, xcb_atom_t property,
                             const Converted& done) {
    xcb_connection_t* raw = m_connection.raw();
    const std::size_t flavours = m_flavours ? m_flavours->size() : 0;
    if (target == m_connection.atom("TARGETS")) {
        std::vector<xcb_atom_t> atoms{m_connection.atom("TARGETS"), m_connection.atom("TIMESTAMP"),
                                      m_connection.atom("MULTIPLE")};
        for (std::size_t i = 0; i < flavours; ++i) {
            atoms.push_back(m_connection.atom((*m_flavours)[i].target));
        }
        xcb_change_property(raw, XCB_PROP_MODE_REPLACE, requestor, property, XCB_ATOM_ATOM, 32,
                            static_cast<quint32>(atoms.size()), atoms.data());
        done(true);
        return;
    }
    if (target == m_connection.atom("TIMESTAMP")) {
        xcb_change_property(raw, XCB_PROP_MODE_REPLACE, requestor, property, XCB_ATOM_INTEGER, 32, 1,
                            &m_since);
        done(true);
        return;
    }
    for (std::size_t i = 0; i < flavours; ++i) {
        if (m_connection.atom((*m_flavours)[i].target) == target) {
            const xcb_atom_t type = m_connection.atom((*m_flavours)[i].type);
            m_flavours->bytesOf(i, [this, requestor, property, type, done](const QByteArray& bytes) {
                deliver(requestor, property, type, bytes);
                done(!bytes.isNull());
            });
            return;
        }
    }
    done(false);
}

void SelectionOwner::deliver(xcb_window_t requestor, xcb_atom_t property, xcb_atom_t type,
                             const QByteArray& bytes) {
    if (bytes.size() > m_bytesPerPiece) {
        startIncremental(requestor, property, type, bytes);
    } else if (!bytes.isNull()) {
        xcb_change_property(m_connection.raw(), XCB_PROP_MODE_REPLACE, requestor, property, type, 8,
                            static_cast<quint32>(bytes.size()), bytes.constData());
    }
}

void SelectionOwner::answerMultiple(const xcb_selection_request_event_t& request) {
    const auto cookie = xcb_get_property(m_connection.raw(), 0, request.requestor, request.property,
                                         XCB_GET_PROPERTY_TYPE_ANY, 0, 2 * mostPairs);
    m_connection.whenReplied(cookie.sequence, [request, self = QPointer(this)](const void* reply) {
        if (!self) {
            return;
        }
        const auto* list = static_cast<const xcb_get_property_reply_t*>(reply);
        if (list == nullptr || list->format != 32 || list->value_len < 2) {
            self->notify(request, XCB_ATOM_NONE);
            return;
        }
        const auto* atoms = static_cast<const xcb_atom_t*>(xcb_get_property_value(list));
        self->answerPairs(request, {atoms, atoms + (list->value_len - list->value_len % 2)});
    });
    m_connection.flush();
}

// The property of the request lists pairs of target and property; refused ones are marked in that list, and
// the request is answered when all of them are.
void SelectionOwner::answerPairs(const xcb_selection_request_event_t& request,
                                 std::vector<xcb_atom_t> pairs) {
    struct Progress {
        std::vector<xcb_atom_t> pairs;
        std::size_t missing;
    };
    const auto progress = std::make_shared<Progress>(Progress{pairs, pairs.size() / 2});
    for (std::size_t i = 0; i < pairs.size(); i += 2) {
        convert(request.requestor, pairs[i], pairs[i + 1], [this, request, progress, i](bool isConverted) {
            if (!isConverted) {
                progress->pairs[i + 1] = XCB_ATOM_NONE;
            }
            if (--progress->missing == 0) {
                xcb_change_property(m_connection.raw(), XCB_PROP_MODE_REPLACE, request.requestor,
                                    request.property, m_connection.atom("ATOM_PAIR"), 32,
                                    static_cast<quint32>(progress->pairs.size()), progress->pairs.data());
                notify(request, request.property);
            }
        });
    }
}

void SelectionOwner::notify(const xcb_selection_request_event_t& request, xcb_atom_t property) {
    // An event is 32 bytes on the wire, and the structure is shorter.
    union {
        xcb_selection_notify_event_t notify;
        char wire[32];
    } event{};
    event.notify.response_type = XCB_SELECTION_NOTIFY;
    event.notify.time = request.time;
    event.notify.requestor = request.requestor;
    event.notify.selection = request.selection;
    event.notify.target = request.target;
    event.notify.property = property;
    xcb_send_event(m_connection.raw(), 0, request.requestor, XCB_EVENT_MASK_NO_EVENT, event.wire);
    m_connection.flush();
}

void SelectionOwner::startIncremental(xcb_window_t requestor, xcb_atom_t property, xcb_atom_t type,
                                      const QByteArray& bytes) {
    xcb_connection_t* raw = m_connection.raw();
    if (!m_connection.isOwnResource(requestor)) {
        const quint32 events = XCB_EVENT_MASK_PROPERTY_CHANGE | XCB_EVENT_MASK_STRUCTURE_NOTIFY;
        xcb_change_window_attributes(raw, requestor, XCB_CW_EVENT_MASK, &events);
    }
    const auto announced = static_cast<quint32>(bytes.size());
    xcb_change_property(raw, XCB_PROP_MODE_REPLACE, requestor, property, m_connection.atom("INCR"), 32, 1,
                        &announced);

    std::erase_if(m_incremental, [&](const Incremental& each) {
        return each.requestor == requestor && each.property == property;
    });
    m_incremental.push_back({requestor, property, type, bytes, 0, false, std::make_unique<QTimer>()});
    const auto transfer = std::prev(m_incremental.end());
    transfer->silence->setSingleShot(true);
    QObject::connect(
        transfer->silence.get(), &QTimer::timeout, transfer->silence.get(),
        [this, transfer] { endIncremental(transfer); }, Qt::QueuedConnection);
    transfer->silence->start(requestorSilence);
}

void SelectionOwner::sendNextPiece(std::list<Incremental>::iterator transfer) {
    if (transfer->lastSent) {
        endIncremental(transfer);
        return;
    }
    const qsizetype length = std::min(m_bytesPerPiece, transfer->bytes.size() - transfer->sent);
    xcb_change_property(m_connection.raw(), XCB_PROP_MODE_REPLACE, transfer->requestor, transfer->property,
                        transfer->type, 8, static_cast<quint32>(length),
                        transfer->bytes.constData() + transfer->sent);
    transfer->sent += length;
    transfer->lastSent = length == 0; // an empty piece says that this was all
    transfer->silence->start(requestorSilence);
    m_connection.flush();
}

void SelectionOwner::endIncremental(std::list<Incremental>::iterator transfer) {
    const xcb_window_t requestor = transfer->requestor;
    m_incremental.erase(transfer);
    const bool isLast = std::none_of(m_incremental.begin(), m_incremental.end(),
                                     [&](const Incremental& each) { return each.requestor == requestor; });
    if (isLast && !m_connection.isOwnResource(requestor)) {
        // Or every change of the window's properties would wake us for as long as it exists.
        const quint32 nothing = XCB_EVENT_MASK_NO_EVENT;
        xcb_change_window_attributes(m_connection.raw(), requestor, XCB_CW_EVENT_MASK, &nothing);
        m_connection.flush();
    }
}

void SelectionOwner::forgetRequestor(xcb_window_t requestor) {
    std::erase_if(m_incremental, [&](const Incremental& each) { return each.requestor == requestor; });
}

} // namespace corvatto
