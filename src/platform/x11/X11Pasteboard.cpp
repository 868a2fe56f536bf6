#include "platform/x11/X11Pasteboard.h"

#include "base/Diagnostics.h"

#include <chrono>

namespace corvatto {
namespace {

constexpr std::chrono::milliseconds rereadingDelay{200};

// A clipboard manager that takes the clipboard over from a program that exits does so within some
// milliseconds. Who takes it over at the same moment confuses some.
constexpr std::chrono::milliseconds managersPrecedence{100};

} // namespace

X11Pasteboard::X11Pasteboard(XcbConnection& connection, NameOfSource nameOfSource,
                             const ClipboardReadLimits& limits)
    : SnapshotPasteboard(limits), m_connection(connection), m_nameOfSource(std::move(nameOfSource)),
      m_selection(connection.atom("CLIPBOARD")), m_managerSelection(connection.atom("CLIPBOARD_MANAGER")),
      m_requestor(connection.createMessageWindow(XCB_EVENT_MASK_PROPERTY_CHANGE)), m_properties(connection),
      m_owner(connection, m_selection) {
    m_offerAgain.setSingleShot(true);
    m_offerAgain.setInterval(managersPrecedence);
    m_offerAgain.callOnTimeout([this] { offerAgain(); });
    m_rereading.setSingleShot(true);
    m_rereading.setInterval(rereadingDelay);
    m_rereading.callOnTimeout([this] { readFrom(m_ownership, Meaning::aChangeIfDifferent); });
    watchSelections();
}

X11Pasteboard::~X11Pasteboard() {
    dropReading();
    m_connection.removeListener(*this);
    xcb_destroy_window(m_connection.raw(), m_requestor);
    m_connection.flush();
}

void X11Pasteboard::watchSelections() {
    xcb_connection_t* raw = m_connection.raw();
    const xcb_query_extension_reply_t* extension = xcb_get_extension_data(raw, &xcb_xfixes_id);
    if (extension == nullptr || extension->present == 0) {
        printLine(u"[Pasteboard] ERROR: The X server lacks XFixes, copies cannot be noticed.");
        return;
    }
    m_firstXFixesEvent = extension->first_event;
    const XcbPointer<xcb_xfixes_query_version_reply_t> version(xcb_xfixes_query_version_reply(
        raw, xcb_xfixes_query_version(raw, XCB_XFIXES_MAJOR_VERSION, XCB_XFIXES_MINOR_VERSION), nullptr));
    m_connection.addListener(*this);
    constexpr quint32 everyChange = XCB_XFIXES_SELECTION_EVENT_MASK_SET_SELECTION_OWNER |
                                    XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_WINDOW_DESTROY |
                                    XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_CLIENT_CLOSE;
    xcb_xfixes_select_selection_input(raw, m_requestor, m_selection, everyChange);
    xcb_xfixes_select_selection_input(raw, m_requestor, m_managerSelection, everyChange);
    const XcbPointer<xcb_get_selection_owner_reply_t> manager(
        xcb_get_selection_owner_reply(raw, xcb_get_selection_owner(raw, m_managerSelection), nullptr));
    m_manager = manager ? manager->owner : xcb_window_t{XCB_NONE};
    readInitialContent();
}

void X11Pasteboard::readInitialContent() {
    // Content that was there before us is no change, but it too survives the exit of its owner.
    xcb_connection_t* raw = m_connection.raw();
    const XcbPointer<xcb_get_selection_owner_reply_t> owner(
        xcb_get_selection_owner_reply(raw, xcb_get_selection_owner(raw, m_selection), nullptr));
    if (owner && owner->owner != XCB_NONE) {
        readFrom({owner->owner, XCB_CURRENT_TIME}, Meaning::noChange);
    }
    m_connection.flush();
}

void X11Pasteboard::handleEvent(const xcb_generic_event_t& event) {
    if ((event.response_type & 0x7F) != m_firstXFixesEvent + XCB_XFIXES_SELECTION_NOTIFY) {
        return;
    }
    const auto& notify = reinterpret_cast<const xcb_xfixes_selection_notify_event_t&>(event);
    if (notify.selection == m_managerSelection) {
        m_manager = notify.owner;
    } else if (notify.selection == m_selection) {
        ownershipChanged(notify);
    }
}

void X11Pasteboard::ownershipChanged(const xcb_xfixes_selection_notify_event_t& event) {
    const bool isTakeover = event.subtype == XCB_XFIXES_SELECTION_EVENT_SET_SELECTION_OWNER;
    if (isTakeover && event.owner == m_owner.window()) {
        m_rereading.stop();
        m_ownership = {event.owner, event.selection_timestamp};
        m_owner.takeoverAnnounced(event.selection_timestamp);
    } else if (m_owner.hasPendingTakeover()) {
        return; // overtaken by our own write
    } else if (isTakeover) {
        announced({event.owner, event.selection_timestamp});
    } else {
        ownerGone();
    }
}

void X11Pasteboard::announced(const Ownership& ownership) {
    if (ownership == m_ownership) {
        // The same takeover told again, or another one at the same time, as of a program that copies twice in
        // answer to one key. Only the content tells. Looked at after a while, because some programs do this
        // without end.
        if (!m_rereading.isActive()) {
            m_rereading.start();
        }
        return;
    }
    m_ownership = ownership;
    if (ownership.owner == XCB_NONE) {
        m_rereading.stop();
        m_isOwnerGone = false;
        emptied();
    } else {
        readFrom(ownership, Meaning::aChange);
    }
}

void X11Pasteboard::readFrom(const Ownership& ownership, Meaning meaning) {
    m_rereading.stop();
    m_isOwnerGone = false;
    auto selection = std::make_unique<SelectionSource>(
        m_connection, m_properties, SelectionSource::Ownership{m_requestor, m_selection, ownership.since},
        limits().silence);
    const bool mayBeARescue = meaning == Meaning::aChange && isOwnedByManager();
    read(std::move(selection), mayBeARescue ? Meaning::aChangeIfDifferent : meaning,
         m_nameOfSource(ownership.owner));
}

// Whether the owner is the desktop's clipboard manager, to which programs that exit hand their content.
bool X11Pasteboard::isOwnedByManager() const {
    return m_manager != XCB_NONE && m_connection.isOfSameClient(m_manager, m_ownership.owner);
}

void X11Pasteboard::ownerGone() {
    m_rereading.stop();
    m_isOwnerGone = true;
    m_ownership = {};
    if (isReading()) {
        endReading();
    } else if (m_manager != XCB_NONE) {
        m_offerAgain.start();
    } else {
        offerAgain();
    }
}

void X11Pasteboard::wasRead() {
    offerAgain();
}

void X11Pasteboard::offerAgain() {
    if (m_isOwnerGone && !content().isEmpty() && m_owner.offerIfUnowned(content())) {
        m_isOwnerGone = false;
    }
}

void X11Pasteboard::offer(const ClipboardContent& content) {
    m_owner.offer(content);
    m_isOwnerGone = false;
}

void X11Pasteboard::overtaken() {
    m_rereading.stop();
}

void X11Pasteboard::handOver(std::function<void()> done) {
    if (m_save) {
        return; // whoever asks again and again must not put off the end
    }
    const bool isOurs = m_ownership.owner == m_owner.window() || m_owner.hasPendingTakeover();
    if (isOurs && !content().isEmpty()) {
        m_save = std::make_unique<ClipboardManagerSave>(m_connection, m_owner.window(), std::move(done));
    } else {
        QTimer::singleShot(0, &m_connection, std::move(done));
    }
}

} // namespace corvatto
