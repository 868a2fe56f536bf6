#include "platform/x11/XcbConnection.h"

#include <xcb/xcbext.h>

#include <algorithm>

namespace corvatto {
namespace {

// How many events and replies one turn of the event loop handles.
constexpr int itemsPerTurn = 256;

xcb_atom_t internAtom(xcb_connection_t* connection, const QByteArray& name) {
    const auto cookie = xcb_intern_atom(connection, 0, static_cast<quint16>(name.size()), name.constData());
    const XcbPointer<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(connection, cookie, nullptr));
    return reply ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
}

} // namespace

bool XcbConnection::serverIsReachable() {
    xcb_connection_t* connection = xcb_connect(nullptr, nullptr);
    const bool isReachable = xcb_connection_has_error(connection) == 0;
    xcb_disconnect(connection);
    return isReachable;
}

XcbConnection::Prepared XcbConnection::prepare(const QByteArrayList& names) {
    Prepared prepared;
    xcb_connection_t* raw = xcb_connect(nullptr, &prepared.screen);
    prepared.connection.reset(raw, xcb_disconnect);
    if (xcb_connection_has_error(raw) != 0) {
        return {};
    }
    for (const QByteArray& name : names) {
        prepared.atoms.insert(name, internAtom(raw, name));
    }
    return prepared;
}

std::unique_ptr<XcbConnection> XcbConnection::open() {
    Prepared prepared = prepare();
    return prepared.connection ? std::make_unique<XcbConnection>(std::move(prepared)) : nullptr;
}

XcbConnection::XcbConnection(Prepared prepared)
    : m_owned(std::move(prepared.connection)), m_connection(m_owned.get()),
      m_notifier(xcb_get_file_descriptor(m_connection), QSocketNotifier::Read),
      m_atoms(std::move(prepared.atoms)) {
    int screen = prepared.screen;
    xcb_screen_iterator_t screens = xcb_setup_roots_iterator(xcb_get_setup(m_connection));
    for (; screen > 0 && screens.rem > 1; --screen) {
        xcb_screen_next(&screens);
    }
    m_root = screens.data->root;
    connect(&m_notifier, &QSocketNotifier::activated, this, &XcbConnection::pump);
}

XcbConnection::~XcbConnection() {
    m_notifier.setEnabled(false);
    m_pending.clear(); // without an answer: those who asked have gone, or are going
}

xcb_atom_t XcbConnection::atom(const QByteArray& name) {
    const auto known = m_atoms.constFind(name);
    if (known != m_atoms.constEnd()) {
        return *known;
    }
    const xcb_atom_t atom = internAtom(m_connection, name);
    m_atoms.insert(name, atom);
    // Waiting for the answer may have read events, which wake no notifier any more.
    flush();
    return atom;
}

QByteArray XcbConnection::property(xcb_window_t window, const QByteArray& name, xcb_atom_t type) {
    constexpr quint32 maximumWords = 4096;
    const auto cookie = xcb_get_property(m_connection, 0, window, atom(name), type, 0, maximumWords);
    const XcbPointer<xcb_get_property_reply_t> reply(xcb_get_property_reply(m_connection, cookie, nullptr));
    flush(); // as above
    if (!reply || reply->type != type) {
        return {};
    }
    return QByteArray(static_cast<const char*>(xcb_get_property_value(reply.get())),
                      xcb_get_property_value_length(reply.get()));
}

std::vector<quint32> XcbConnection::values(xcb_window_t window, const QByteArray& name, xcb_atom_t type) {
    const QByteArray bytes = property(window, name, type);
    std::vector<quint32> values(static_cast<std::size_t>(bytes.size()) / sizeof(quint32));
    std::copy_n(bytes.constData(), values.size() * sizeof(quint32), reinterpret_cast<char*>(values.data()));
    return values;
}

xcb_window_t XcbConnection::createMessageWindow(quint32 eventMask) {
    const xcb_window_t window = xcb_generate_id(m_connection);
    xcb_create_window(m_connection, XCB_COPY_FROM_PARENT, window, m_root, -1, -1, 1, 1, 0,
                      XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, XCB_CW_EVENT_MASK, &eventMask);
    return window;
}

void XcbConnection::addListener(XcbEventListener& listener) {
    m_listeners.push_back(&listener);
}

void XcbConnection::removeListener(XcbEventListener& listener) {
    // Only marked here: it may be removed while events are being delivered.
    std::replace(m_listeners.begin(), m_listeners.end(), &listener, static_cast<XcbEventListener*>(nullptr));
}

void XcbConnection::whenReplied(unsigned int sequence, ReplyHandler done) {
    m_pending.push_back({sequence, std::move(done)});
}

void XcbConnection::flush() {
    xcb_flush(m_connection);
    // Writing may have read as well, when the server was slow to take our requests.
    if (!m_pumpScheduled) {
        m_pumpScheduled = true;
        QMetaObject::invokeMethod(this, &XcbConnection::pump, Qt::QueuedConnection);
    }
}

bool XcbConnection::deliverNextReply() {
    if (m_pending.empty()) {
        return false;
    }
    void* reply = nullptr;
    xcb_generic_error_t* error = nullptr;
    if (xcb_poll_for_reply(m_connection, m_pending.front().sequence, &reply, &error) == 0) {
        return false;
    }
    const XcbPointer<void> ownedReply(reply);
    const XcbPointer<xcb_generic_error_t> ownedError(error);
    const ReplyHandler done = std::move(m_pending.front().done);
    m_pending.pop_front();
    done(reply);
    return true;
}

bool XcbConnection::deliverNextEvent() {
    const XcbPointer<xcb_generic_event_t> event(xcb_poll_for_event(m_connection));
    if (!event) {
        return false;
    }
    // Type 0 is the error of a request that nobody waits for, such as one about a window that has gone
    // meanwhile.
    if (event->response_type != 0) {
        ++m_deliveries; // a listener may open an alert, whose event loop delivers the next events
        for (std::size_t i = 0; i < m_listeners.size(); ++i) {
            if (m_listeners[i] != nullptr) {
                m_listeners[i]->handleEvent(*event);
            }
        }
        if (--m_deliveries == 0) {
            std::erase(m_listeners, nullptr);
        }
    }
    return true;
}

bool XcbConnection::deliverNext() {
    // Events first: asking for one is what reads from the socket, replies included.
    const bool delivered = deliverNextEvent();
    return deliverNextReply() || delivered;
}

void XcbConnection::pump() {
    m_pumpScheduled = false;
    for (int turn = 0; turn < itemsPerTurn; ++turn) {
        if (deliverNext()) {
            continue;
        }
        // Sending may have read as well, so one more look before the notifier takes over.
        xcb_flush(m_connection);
        if (!deliverNext()) {
            if (xcb_connection_has_error(m_connection) != 0) {
                m_notifier.setEnabled(false);
                Q_EMIT disconnected();
            }
            return;
        }
    }
    flush(); // more is waiting; the rest of the program gets a turn first
}

} // namespace corvatto
