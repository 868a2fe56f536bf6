#include "platform/x11/SelectionOwner.h"

#include "base/ImageDecoding.h"
#include "base/TextDecoding.h"

#include <QBuffer>
#include <QImageWriter>

#include <xcb/xfixes.h>

#include <algorithm>
#include <chrono>

namespace corvatto {
namespace {

// Larger content goes in pieces of this size: small enough that one piece costs no frame, on either side.
constexpr qsizetype bytesPerPiece = qsizetype{256} << 10;
constexpr std::chrono::seconds requestorSilence{30};

QByteArray reencoded(const QByteArray& imageBytes, const char* format) {
    const auto image = decodeImage(imageBytes);
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    if (!image || !QImageWriter(&buffer, format).write(*image)) {
        return {};
    }
    return bytes;
}

} // namespace

SelectionOwner::SelectionOwner(XcbConnection& connection, xcb_atom_t selection)
    : m_connection(connection), m_selection(selection),
      m_window(connection.createMessageWindow(XCB_EVENT_MASK_PROPERTY_CHANGE)),
      m_self(std::make_shared<SelectionOwner*>(this)) {
    m_connection.addListener(*this);
}

SelectionOwner::~SelectionOwner() {
    m_connection.removeListener(*this);
    xcb_destroy_window(m_connection.raw(), m_window);
    m_connection.flush();
}

void SelectionOwner::offer(const ClipboardContent& content) {
    setContent(content);
    // The server's own current time: it accepts no older one, and we have seen no event whose time would do.
    xcb_set_selection_owner(m_connection.raw(), m_window, m_selection, XCB_CURRENT_TIME);
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
        xcb_set_selection_owner(raw, m_window, m_selection, XCB_CURRENT_TIME);
    }
    xcb_ungrab_server(raw);
    m_connection.flush();
    return isFree;
}

void SelectionOwner::setContent(const ClipboardContent& content) {
    m_since = XCB_CURRENT_TIME;
    m_flavours.clear();
    if (!content.uriList.isNull()) {
        add("text/uri-list", [bytes = content.uriList] { return bytes; });
    }
    if (!content.gnomeCopiedFiles.isNull()) {
        add("x-special/gnome-copied-files", [bytes = content.gnomeCopiedFiles] { return bytes; });
    }
    if (!content.imageBytes.isNull()) {
        addImage(content);
    }
    if (!content.textBytes.isNull()) {
        addText(content);
    }
}

void SelectionOwner::addImage(const ClipboardContent& content) {
    add(content.imageType, [bytes = content.imageBytes] { return bytes; });
    for (const char* format : {"png", "bmp", "jpeg", "tiff"}) {
        const QByteArray type = QByteArray("image/") + format;
        if (type != content.imageType) {
            add(type, [bytes = content.imageBytes, format] { return reencoded(bytes, format); });
        }
    }
}

void SelectionOwner::addText(const ClipboardContent& content) {
    const auto utf8 = [target = content.textTarget, bytes = content.textBytes] {
        return target == "UTF8_STRING" ? bytes : decodeText(target, bytes).text.toUtf8();
    };
    for (const char* target : {"UTF8_STRING", "text/plain;charset=utf-8", "text/plain", "TEXT"}) {
        add(target, utf8);
    }
    add("STRING", [utf8] { return QString::fromUtf8(utf8()).toLatin1(); });
}

void SelectionOwner::add(const QByteArray& target, std::function<QByteArray()> bytes) {
    const xcb_atom_t atom = m_connection.atom(target);
    // TEXT leaves the choice of the encoding to us, and the type says which it is.
    const xcb_atom_t type = target == "TEXT" ? m_connection.atom("UTF8_STRING") : atom;
    m_flavours.push_back({atom, type, std::move(bytes)});
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
        const auto& clear = reinterpret_cast<const xcb_selection_clear_event_t&>(event);
        if (clear.owner == m_window && clear.selection == m_selection) {
            m_flavours.clear(); // transfers under way keep their own bytes
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

void SelectionOwner::answer(const xcb_selection_request_event_t& request) {
    // Requestors older than the convention leave the property to the target's name.
    const xcb_atom_t property = request.property == XCB_ATOM_NONE ? request.target : request.property;
    if (request.selection != m_selection) {
        notify(request, XCB_ATOM_NONE);
    } else if (request.target == m_connection.atom("MULTIPLE") && request.property != XCB_ATOM_NONE) {
        answerMultiple(request);
    } else {
        notify(request,
               convert(request.requestor, request.target, property) ? property : xcb_atom_t{XCB_ATOM_NONE});
    }
}

bool SelectionOwner::convert(xcb_window_t requestor, xcb_atom_t target, xcb_atom_t property) {
    xcb_connection_t* raw = m_connection.raw();
    if (target == m_connection.atom("TARGETS")) {
        std::vector<xcb_atom_t> atoms{m_connection.atom("TARGETS"), m_connection.atom("TIMESTAMP"),
                                      m_connection.atom("MULTIPLE")};
        for (const Flavour& flavour : m_flavours) {
            atoms.push_back(flavour.target);
        }
        xcb_change_property(raw, XCB_PROP_MODE_REPLACE, requestor, property, XCB_ATOM_ATOM, 32,
                            static_cast<quint32>(atoms.size()), atoms.data());
        return true;
    }
    if (target == m_connection.atom("TIMESTAMP")) {
        xcb_change_property(raw, XCB_PROP_MODE_REPLACE, requestor, property, XCB_ATOM_INTEGER, 32, 1,
                            &m_since);
        return true;
    }
    const auto flavour = std::find_if(m_flavours.begin(), m_flavours.end(),
                                      [&](const Flavour& each) { return each.target == target; });
    if (flavour == m_flavours.end()) {
        return false;
    }
    const QByteArray bytes = flavour->bytes();
    if (bytes.isNull()) {
        return false;
    }
    if (bytes.size() > bytesPerPiece) {
        startIncremental(requestor, property, flavour->type, bytes);
    } else {
        xcb_change_property(raw, XCB_PROP_MODE_REPLACE, requestor, property, flavour->type, 8,
                            static_cast<quint32>(bytes.size()), bytes.constData());
    }
    return true;
}

void SelectionOwner::answerMultiple(const xcb_selection_request_event_t& request) {
    // The property of the request lists pairs of target and property; refused ones are marked in that list.
    constexpr quint32 maximumPairs = 64;
    xcb_connection_t* raw = m_connection.raw();
    const auto cookie = xcb_get_property(raw, 0, request.requestor, request.property,
                                         XCB_GET_PROPERTY_TYPE_ANY, 0, 2 * maximumPairs);
    m_connection.whenReplied(cookie.sequence, [request, self = std::weak_ptr(m_self)](const void* reply) {
        const auto alive = self.lock();
        if (!alive) {
            return;
        }
        SelectionOwner& owner = **alive;
        const auto* list = static_cast<const xcb_get_property_reply_t*>(reply);
        if (list == nullptr || list->format != 32 || list->value_len < 2) {
            owner.notify(request, XCB_ATOM_NONE);
            return;
        }
        const auto* atoms = static_cast<const xcb_atom_t*>(xcb_get_property_value(list));
        const std::size_t length = list->value_len - list->value_len % 2;
        std::vector<xcb_atom_t> pairs(atoms, atoms + length);
        for (std::size_t i = 0; i < pairs.size(); i += 2) {
            if (!owner.convert(request.requestor, pairs[i], pairs[i + 1])) {
                pairs[i + 1] = XCB_ATOM_NONE;
            }
        }
        xcb_change_property(owner.m_connection.raw(), XCB_PROP_MODE_REPLACE, request.requestor,
                            request.property, owner.m_connection.atom("ATOM_PAIR"), 32,
                            static_cast<quint32>(pairs.size()), pairs.data());
        owner.notify(request, request.property);
    });
    m_connection.flush();
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
    const quint32 events = XCB_EVENT_MASK_PROPERTY_CHANGE | XCB_EVENT_MASK_STRUCTURE_NOTIFY;
    xcb_change_window_attributes(raw, requestor, XCB_CW_EVENT_MASK, &events);
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
        [this, transfer] { m_incremental.erase(transfer); }, Qt::QueuedConnection);
    transfer->silence->start(requestorSilence);
}

void SelectionOwner::sendNextPiece(std::list<Incremental>::iterator transfer) {
    if (transfer->lastSent) {
        m_incremental.erase(transfer);
        return;
    }
    const qsizetype length = std::min(bytesPerPiece, transfer->bytes.size() - transfer->sent);
    xcb_change_property(m_connection.raw(), XCB_PROP_MODE_REPLACE, transfer->requestor, transfer->property,
                        transfer->type, 8, static_cast<quint32>(length),
                        transfer->bytes.constData() + transfer->sent);
    transfer->sent += length;
    transfer->lastSent = length == 0; // an empty piece says that this was all
    transfer->silence->start(requestorSilence);
    m_connection.flush();
}

void SelectionOwner::forgetRequestor(xcb_window_t requestor) {
    std::erase_if(m_incremental, [&](const Incremental& each) { return each.requestor == requestor; });
}

} // namespace corvatto
