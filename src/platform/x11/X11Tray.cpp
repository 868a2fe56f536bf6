#include "platform/x11/X11Tray.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusServiceWatcher>
#include <QDBusVariant>

#include <xcb/xfixes.h>

namespace corvatto {
namespace {

// Where StatusNotifierItems are announced.
const QString watcherService = QStringLiteral("org.kde.StatusNotifierWatcher");
const QString watcherPath = QStringLiteral("/StatusNotifierWatcher");

} // namespace

X11Tray::X11Tray(XcbConnection& connection)
    : m_connection(connection), m_embeddingTray(connection.atom("_NET_SYSTEM_TRAY_S0")) {
    m_connection.addListener(*this);
}

X11Tray::~X11Tray() {
    m_connection.removeListener(*this);
}

void X11Tray::find() {
    followBus();
    followEmbeddingTrays();
    look();
}

void X11Tray::followBus() {
    QDBusConnection bus = QDBusConnection::sessionBus();
    auto* watcher =
        new QDBusServiceWatcher(watcherService, bus, QDBusServiceWatcher::WatchForOwnerChange, this);
    connect(watcher, &QDBusServiceWatcher::serviceOwnerChanged, this, &X11Tray::look);
    // The watcher may be there long before there is anything to show the items.
    bus.connect(watcherService, watcherPath, watcherService, QStringLiteral("StatusNotifierHostRegistered"),
                this, SLOT(look()));
}

void X11Tray::followEmbeddingTrays() {
    xcb_connection_t* raw = m_connection.raw();
    const xcb_query_extension_reply_t* extension = xcb_get_extension_data(raw, &xcb_xfixes_id);
    if (extension != nullptr && extension->present != 0) {
        m_firstXFixesEvent = extension->first_event;
        xcb_xfixes_select_selection_input(raw, m_connection.root(), m_embeddingTray,
                                          XCB_XFIXES_SELECTION_EVENT_MASK_SET_SELECTION_OWNER);
        m_connection.flush();
    }
}

void X11Tray::handleEvent(const xcb_generic_event_t& event) {
    if (m_firstXFixesEvent != 0 &&
        (event.response_type & 0x7F) == m_firstXFixesEvent + XCB_XFIXES_SELECTION_NOTIFY &&
        reinterpret_cast<const xcb_xfixes_selection_notify_event_t&>(event).selection == m_embeddingTray) {
        look();
    }
}

void X11Tray::look() {
    if (m_isFound) {
        return;
    }
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected()) { // nobody would answer, not even with an error
        if (hasEmbeddingTray()) {
            announce();
        }
        return;
    }
    QDBusMessage question = QDBusMessage::createMethodCall(watcherService, watcherPath,
                                                           QStringLiteral("org.freedesktop.DBus.Properties"),
                                                           QStringLiteral("Get"));
    question << watcherService << QStringLiteral("IsStatusNotifierHostRegistered");
    question.setAutoStartService(false);
    auto* answer = new QDBusPendingCallWatcher(bus.asyncCall(question), this);
    connect(answer, &QDBusPendingCallWatcher::finished, this, [this, answer] {
        answer->deleteLater();
        answered(*answer);
    });
}

void X11Tray::answered(const QDBusPendingCall& call) {
    const QDBusPendingReply<QDBusVariant> reply = call;
    // Any other error says that there is nobody, or nobody who knows the question.
    const auto error = reply.error().type();
    const bool isSilent =
        error == QDBusError::NoReply || error == QDBusError::Timeout || error == QDBusError::TimedOut;
    const bool hasHost = reply.isValid() && reply.value().variant().toBool();
    if (!m_isFound && !isSilent && (hasHost || hasEmbeddingTray())) {
        announce();
    }
}

void X11Tray::announce() {
    m_isFound = true;
    Q_EMIT found();
}

bool X11Tray::hasEmbeddingTray() const {
    xcb_connection_t* raw = m_connection.raw();
    const XcbPointer<xcb_get_selection_owner_reply_t> owner(
        xcb_get_selection_owner_reply(raw, xcb_get_selection_owner(raw, m_embeddingTray), nullptr));
    m_connection.flush(); // waiting may have read events
    return owner && owner->owner != XCB_NONE;
}

} // namespace corvatto
