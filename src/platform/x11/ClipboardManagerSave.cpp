#include "platform/x11/ClipboardManagerSave.h"

#include <chrono>
#include <utility>

namespace corvatto {
namespace {

constexpr std::chrono::seconds replyTimeout{2};

} // namespace

ClipboardManagerSave::ClipboardManagerSave(XcbConnection& connection, xcb_window_t owner,
                                           std::function<void()> done)
    : m_connection(connection), m_owner(owner), m_manager(connection.atom("CLIPBOARD_MANAGER")),
      m_done(std::move(done)) {
    m_connection.addListener(*this);
    m_replyTimeout.setSingleShot(true);
    m_replyTimeout.callOnTimeout([this] { finish(); });
    xcb_connection_t* raw = m_connection.raw();
    const XcbPointer<xcb_get_selection_owner_reply_t> manager(
        xcb_get_selection_owner_reply(raw, xcb_get_selection_owner(raw, m_manager), nullptr));
    if (!manager || manager->owner == XCB_NONE) {
        m_replyTimeout.start(0);
        return;
    }
    xcb_convert_selection(raw, m_owner, m_manager, m_connection.atom("SAVE_TARGETS"),
                          m_connection.atom("CORVATTO_SAVE_TARGETS"), XCB_CURRENT_TIME);
    m_connection.flush();
    m_replyTimeout.start(replyTimeout);
}

ClipboardManagerSave::~ClipboardManagerSave() {
    m_connection.removeListener(*this);
}

void ClipboardManagerSave::handleEvent(const xcb_generic_event_t& event) {
    if ((event.response_type & 0x7F) != XCB_SELECTION_NOTIFY) {
        return;
    }
    const auto& notify = reinterpret_cast<const xcb_selection_notify_event_t&>(event);
    if (notify.requestor == m_owner && notify.selection == m_manager) {
        finish();
    }
}

void ClipboardManagerSave::finish() {
    m_replyTimeout.stop();
    if (const auto done = std::exchange(m_done, nullptr)) {
        done();
    }
}

} // namespace corvatto
