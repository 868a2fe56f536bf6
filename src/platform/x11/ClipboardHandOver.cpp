#include "platform/x11/ClipboardHandOver.h"

#include <chrono>
#include <utility>

namespace corvatto {
namespace {

constexpr std::chrono::seconds patience{2};

} // namespace

ClipboardHandOver::ClipboardHandOver(XcbConnection& connection, xcb_window_t owner,
                                     std::function<void()> done)
    : m_connection(connection), m_owner(owner), m_manager(connection.atom("CLIPBOARD_MANAGER")),
      m_done(std::move(done)) {
    m_connection.addListener(*this);
    m_patience.setSingleShot(true);
    m_patience.callOnTimeout([this] { finish(); });
    xcb_connection_t* raw = m_connection.raw();
    const XcbPointer<xcb_get_selection_owner_reply_t> manager(
        xcb_get_selection_owner_reply(raw, xcb_get_selection_owner(raw, m_manager), nullptr));
    if (!manager || manager->owner == XCB_NONE) {
        m_patience.start(0);
        return;
    }
    xcb_convert_selection(raw, m_owner, m_manager, m_connection.atom("SAVE_TARGETS"),
                          m_connection.atom("CORVATTO_SAVE_TARGETS"), XCB_CURRENT_TIME);
    m_connection.flush();
    m_patience.start(patience);
}

ClipboardHandOver::~ClipboardHandOver() {
    m_connection.removeListener(*this);
}

void ClipboardHandOver::handleEvent(const xcb_generic_event_t& event) {
    if ((event.response_type & 0x7F) != XCB_SELECTION_NOTIFY) {
        return;
    }
    const auto& notify = reinterpret_cast<const xcb_selection_notify_event_t&>(event);
    if (notify.requestor == m_owner && notify.selection == m_manager) {
        finish();
    }
}

void ClipboardHandOver::finish() {
    m_patience.stop();
    if (const auto done = std::exchange(m_done, nullptr)) {
        done();
    }
}

} // namespace corvatto
