#include "platform/wayland/XwaylandOwner.h"

#include "base/Worker.h"

#include <QFile>

#include <algorithm>
#include <cstdlib>
#include <utility>

#include <xcb/xfixes.h>

namespace corvatto {
namespace {

constexpr char clipboard[] = "CLIPBOARD";

// Whether any program is connected to the X server of $DISPLAY, if that is one of this machine.
bool isServerInUse() {
    char* host = nullptr;
    int display = 0;
    if (xcb_parse_display(nullptr, &host, &display, nullptr) == 0) {
        return false;
    }
    const bool isLocal = *host == '\0' || qstrcmp(host, "unix") == 0;
    std::free(host);
    QFile sockets(QStringLiteral("/proc/net/unix"));
    if (!isLocal || !sockets.open(QIODevice::ReadOnly)) {
        return false;
    }
    // A connection has the name of the socket that accepted it, and the state 03. The compositor's own is
    // without a name.
    const QByteArray name = "/tmp/.X11-unix/X" + QByteArray::number(display);
    const QByteArrayList lines = sockets.readAll().split('\n');
    return std::any_of(lines.cbegin(), lines.cend(), [&](const QByteArray& line) {
        const QByteArrayList fields = line.simplified().split(' ');
        constexpr qsizetype state = 5, path = 7;
        return fields.size() > path && fields[state] == "03" &&
               (fields[path] == name || fields[path] == '@' + name);
    });
}

xcb_window_t selectionOwner(xcb_connection_t* connection, xcb_atom_t selection) {
    const XcbPointer<xcb_get_selection_owner_reply_t> reply(
        xcb_get_selection_owner_reply(connection, xcb_get_selection_owner(connection, selection), nullptr));
    return reply ? reply->owner : xcb_window_t{XCB_NONE};
}

// Without a connection when no X program owns the clipboard. Waits for the server.
XcbConnection::Prepared connectIfOwned() {
    if (!isServerInUse()) {
        return {};
    }
    // All that is asked for later, so that the main thread does not wait for it.
    XcbConnection::Prepared prepared =
        XcbConnection::prepare({clipboard, "WM_S0", "TARGETS", "INCR", ClipboardReadPlan::secrecyHintTarget,
                                TransferProperties::name(0), TransferProperties::name(1)});
    if (!prepared.connection) {
        return {};
    }
    xcb_connection_t* raw = prepared.connection.get();
    const xcb_window_t owner = selectionOwner(raw, prepared.atoms[clipboard]);
    // The compositor is the window manager, and owns the clipboard for all Wayland programs.
    const xcb_window_t manager = selectionOwner(raw, prepared.atoms["WM_S0"]);
    const bool isOfCompositor = ((owner ^ manager) & ~xcb_get_setup(raw)->resource_id_mask) == 0;
    const xcb_query_extension_reply_t* xfixes = xcb_get_extension_data(raw, &xcb_xfixes_id);
    if (owner == XCB_NONE || isOfCompositor || xfixes == nullptr || xfixes->present == 0) {
        return {};
    }
    const XcbPointer<xcb_xfixes_query_version_reply_t> version(xcb_xfixes_query_version_reply(
        raw, xcb_xfixes_query_version(raw, XCB_XFIXES_MAJOR_VERSION, XCB_XFIXES_MINOR_VERSION), nullptr));
    return prepared;
}

} // namespace

XwaylandOwner::XwaylandOwner(XcbConnection::Prepared prepared)
    : m_connection(std::move(prepared)), m_properties(m_connection),
      m_requestor(m_connection.createMessageWindow(XCB_EVENT_MASK_PROPERTY_CHANGE)),
      m_selectionNotify(
          static_cast<quint8>(xcb_get_extension_data(m_connection.raw(), &xcb_xfixes_id)->first_event +
                              XCB_XFIXES_SELECTION_NOTIFY)) {
    m_connection.addListener(*this);
    xcb_xfixes_select_selection_input(m_connection.raw(), m_requestor, m_connection.atom(clipboard),
                                      XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_WINDOW_DESTROY |
                                          XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_CLIENT_CLOSE);
    m_connection.flush();
    QObject::connect(&m_connection, &XcbConnection::disconnected, &m_connection, [this] { exited(); });
}

XwaylandOwner::~XwaylandOwner() {
    m_source.reset();
    m_connection.removeListener(*this);
}

void XwaylandOwner::askWhetherSecret(std::chrono::milliseconds silenceLimit,
                                     std::function<void(bool isSecret)> done) {
    m_source = std::make_unique<SelectionSource>(
        m_connection, m_properties,
        SelectionSource::Ownership{m_requestor, m_connection.atom(clipboard), XCB_CURRENT_TIME},
        silenceLimit);
    m_source->list([this, done = std::move(done)](const QByteArrayList& targets) {
        if (!targets.contains(ClipboardReadPlan::secrecyHintTarget)) {
            done(targets.isEmpty());
            return;
        }
        constexpr qint64 markBytes = 64;
        m_source->fetch(ClipboardReadPlan::secrecyHintTarget, markBytes,
                        [done](TransferOutcome outcome, const QByteArray& mark, const QByteArray&) {
                            done(outcome != TransferOutcome::complete || mark.startsWith("secret"));
                        });
    });
}

void XwaylandOwner::handleEvent(const xcb_generic_event_t& event) {
    if ((event.response_type & 0x7F) == m_selectionNotify) {
        if (m_source) {
            m_source->ownerGone();
        }
        exited();
    }
}

void XwaylandOwners::find(Found found) {
    m_found = std::move(found);
    m_looksAgain = m_isLooking;
    if (!m_isLooking) {
        look();
    }
}

// Beside the main thread: the server may have been stopped, and connecting to it waits.
void XwaylandOwners::look() {
    m_isLooking = true;
    runOnWorker(*this, connectIfOwned, [this](const XcbConnection::Prepared& prepared) {
        m_isLooking = false;
        if (std::exchange(m_looksAgain, false)) {
            look();
        } else if (const Found found = std::exchange(m_found, nullptr)) {
            found(prepared.connection ? std::make_shared<XwaylandOwner>(prepared) : nullptr);
        }
    });
}

} // namespace corvatto
