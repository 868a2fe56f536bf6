// A connection to the X server that is the program's own, apart from Qt's, served by the main event loop.
//
// Requests whose answers come from the server may be awaited in place at start; everything that depends on
// other programs is asynchronous: replies are delivered to callbacks, events to listeners, and each turn of
// the loop handles a bounded number of them, so that no client can keep the loop busy.
#pragma once

#include <QByteArrayList>
#include <QHash>
#include <QObject>
#include <QSocketNotifier>

#include <xcb/xcb.h>

#include <cstdlib>
#include <deque>
#include <functional>
#include <memory>
#include <vector>

namespace corvatto {

// What xcb allocates with malloc.
struct FreeDeleter {
    void operator()(void* pointer) const { std::free(pointer); }
};
template <typename T>
using XcbPointer = std::unique_ptr<T, FreeDeleter>;

class XcbEventListener {
public:
    XcbEventListener() = default;
    virtual ~XcbEventListener() = default;
    XcbEventListener(const XcbEventListener&) = delete;
    XcbEventListener& operator=(const XcbEventListener&) = delete;

    virtual void handleEvent(const xcb_generic_event_t& event) = 0;
};

class XcbConnection : public QObject {
    Q_OBJECT

public:
    // Whether the display of $DISPLAY takes connections. Needs no application object, unlike everything else
    // here.
    static bool serverIsReachable();

    // Connects to the display of $DISPLAY. Null when there is none.
    static std::unique_ptr<XcbConnection> open();

    // The same in two steps, of which the first waits for the server and may be taken on any thread, and the
    // second does not wait. The atoms of `names` are known from then on.
    struct Prepared {
        std::shared_ptr<xcb_connection_t> connection; // null when there is none
        int screen = 0;
        QHash<QByteArray, xcb_atom_t> atoms;
    };
    static Prepared prepare(const QByteArrayList& names = {});
    explicit XcbConnection(Prepared prepared);
    ~XcbConnection() override;

    xcb_connection_t* raw() const { return m_connection; }
    xcb_window_t root() const { return m_root; }

    // Asks the server at the first use of a name.
    xcb_atom_t atom(const QByteArray& name);

    // The property of a window, cut short after 16 KiB; empty when it is missing or of another type. Waits
    // for the server.
    QByteArray property(xcb_window_t window, const QByteArray& name, xcb_atom_t type);
    // The same, as 32-bit values.
    std::vector<quint32> values(xcb_window_t window, const QByteArray& name, xcb_atom_t type);

    // Creates an unmapped window for messages, with the given event mask.
    xcb_window_t createMessageWindow(quint32 eventMask);

    // Whether a window or another resource was created over this connection.
    bool isOwnResource(quint32 id) const {
        return isOfSameClient(id, xcb_get_setup(m_connection)->resource_id_base);
    }

    // Whether both were created by the same client of the server.
    bool isOfSameClient(quint32 first, quint32 second) const {
        return ((first ^ second) & ~xcb_get_setup(m_connection)->resource_id_mask) == 0;
    }

    // Listeners are not owned and are removed before they die. Both may happen while an event is delivered.
    void addListener(XcbEventListener& listener);
    void removeListener(XcbEventListener& listener);

    // Calls `done` with the reply of the request `sequence`, or with null when the server answered with an
    // error.
    using ReplyHandler = std::function<void(const void* reply)>;
    void whenReplied(unsigned int sequence, ReplyHandler done);

    // Sends what has been requested.
    void flush();

Q_SIGNALS:
    // The server is gone. Nothing works after this.
    void disconnected();

private:
    struct PendingReply {
        unsigned int sequence;
        ReplyHandler done;
    };

    void pump();
    bool deliverNext();
    bool deliverNextReply();
    bool deliverNextEvent();

    std::shared_ptr<xcb_connection_t> m_owned;
    xcb_connection_t* m_connection;
    xcb_window_t m_root = XCB_NONE;
    QSocketNotifier m_notifier;
    QHash<QByteArray, xcb_atom_t> m_atoms;
    std::vector<XcbEventListener*> m_listeners; // null: removed
    int m_deliveries = 0;                       // of events, one inside another
    std::deque<PendingReply> m_pending;
    bool m_pumpScheduled = false;
};

} // namespace corvatto
