// A clipboard manager: prints "ready" when it owns CLIPBOARD_MANAGER, and when a program asks it to, takes
// over what is on CLIPBOARD and prints "saved". Only for what goes in one piece.
#include "XConnection.h"

#include <QMap>

#include <array>
#include <cstdio>

namespace corvatto::test {

namespace {

class Manager {
public:
    Manager() : x(QByteArray()), m_window(xcb_generate_id(x.raw())) {
        xcb_create_window(x.raw(), XCB_COPY_FROM_PARENT, m_window, x.root(), 0, 0, 1, 1, 0,
                          XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, 0, nullptr);
        take("CLIPBOARD_MANAGER");
        say("ready");
        while (true) {
            const auto request = next<xcb_selection_request_event_t>(XCB_SELECTION_REQUEST);
            if (request.target == x.atom("SAVE_TARGETS")) {
                save();
                answer(request);
                say("saved");
            } else {
                serve(request);
            }
        }
    }

private:
    void say(const char* line) {
        std::puts(line);
        std::fflush(stdout);
    }

    void take(const char* selection) {
        xcb_set_selection_owner(x.raw(), m_window, x.atom(selection), XCB_CURRENT_TIME);
        x.sync();
    }

    // The next event of this type; others are dropped.
    template <typename Event>
    Event next(quint8 type) {
        xcb_flush(x.raw());
        while (const auto event = owned(xcb_wait_for_event(x.raw()))) {
            if ((event->response_type & 0x7f) == type) {
                return reinterpret_cast<const Event&>(*event);
            }
        }
        std::exit(0); // the display has gone
    }

    QByteArray fetch(xcb_atom_t target) {
        xcb_convert_selection(x.raw(), m_window, x.atom("CLIPBOARD"), target, x.atom("FETCHED"),
                              XCB_CURRENT_TIME);
        const auto notify = next<xcb_selection_notify_event_t>(XCB_SELECTION_NOTIFY);
        return notify.property != XCB_NONE ? x.property(m_window, "FETCHED") : QByteArray();
    }

    void save() {
        const QByteArray targets = fetch(x.atom("TARGETS"));
        m_content.clear();
        for (qsizetype i = 0; i < targets.size(); i += qsizetype{sizeof(xcb_atom_t)}) {
            const auto target = *reinterpret_cast<const xcb_atom_t*>(targets.constData() + i);
            if (!QByteArrayList{"TARGETS", "TIMESTAMP", "MULTIPLE"}.contains(x.name(target))) {
                m_content[target] = fetch(target);
            }
        }
        take("CLIPBOARD");
    }

    void serve(const xcb_selection_request_event_t& request) {
        const QByteArray bytes = m_content.value(request.target);
        xcb_change_property(x.raw(), XCB_PROP_MODE_REPLACE, request.requestor, request.property,
                            request.target, 8, static_cast<quint32>(bytes.size()), bytes.constData());
        answer(request);
    }

    void answer(const xcb_selection_request_event_t& request) {
        union {
            xcb_selection_notify_event_t notify;
            std::array<char, 32> wire;
        } event{};
        event.notify = {
            XCB_SELECTION_NOTIFY, 0, 0, request.time, request.requestor, request.selection, request.target,
            request.property};
        xcb_send_event(x.raw(), 0, request.requestor, 0, event.wire.data());
        xcb_flush(x.raw());
    }

    XConnection x;
    xcb_window_t m_window;
    QMap<xcb_atom_t, QByteArray> m_content;
};

} // namespace

} // namespace corvatto::test

int main() {
    corvatto::test::Manager manager;
}
