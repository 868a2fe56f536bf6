#include "XConnection.h"

#include <stdexcept>

namespace corvatto::test {

XConnection::XConnection(const QByteArray& display)
    : m_connection(xcb_connect(display.isEmpty() ? nullptr : display.constData(), nullptr), &xcb_disconnect) {
    if (xcb_connection_has_error(raw()) != 0) {
        throw std::runtime_error("no connection to display " + display.toStdString());
    }
    m_screen = xcb_setup_roots_iterator(xcb_get_setup(raw())).data;
}

xcb_atom_t XConnection::atom(const QByteArray& name) const {
    const auto cookie = xcb_intern_atom(raw(), 0, static_cast<quint16>(name.size()), name.constData());
    return owned(xcb_intern_atom_reply(raw(), cookie, nullptr))->atom;
}

QByteArray XConnection::name(xcb_atom_t atom) const {
    const auto reply = owned(xcb_get_atom_name_reply(raw(), xcb_get_atom_name(raw(), atom), nullptr));
    return {xcb_get_atom_name_name(reply.get()), xcb_get_atom_name_name_length(reply.get())};
}

QByteArray XConnection::property(xcb_window_t window, const char* name, bool isTaken) const {
    const auto cookie =
        xcb_get_property(raw(), isTaken, window, atom(name), XCB_GET_PROPERTY_TYPE_ANY, 0, 1 << 24);
    const auto reply = owned(xcb_get_property_reply(raw(), cookie, nullptr));
    return reply && reply->type != XCB_ATOM_NONE
               ? QByteArray(static_cast<const char*>(xcb_get_property_value(reply.get())),
                            xcb_get_property_value_length(reply.get()))
               : QByteArray();
}

void XConnection::watchProperties(xcb_window_t window) const {
    const quint32 events = XCB_EVENT_MASK_PROPERTY_CHANGE;
    xcb_change_window_attributes(raw(), window, XCB_CW_EVENT_MASK, &events);
}

xcb_generic_event_t XConnection::notification(const xcb_selection_request_event_t& request,
                                              xcb_atom_t property) {
    xcb_generic_event_t event{};
    reinterpret_cast<xcb_selection_notify_event_t&>(event) = {
        XCB_SELECTION_NOTIFY, 0,       0, request.time, request.requestor, request.selection,
        request.target,       property};
    return event;
}

void XConnection::answer(const xcb_selection_request_event_t& request, xcb_atom_t property) const {
    const auto event = notification(request, property);
    xcb_send_event(raw(), 0, request.requestor, 0, reinterpret_cast<const char*>(&event));
}

xcb_window_t XConnection::createMessageWindow() const {
    const xcb_window_t window = xcb_generate_id(raw());
    xcb_create_window(raw(), XCB_COPY_FROM_PARENT, window, root(), 0, 0, 1, 1, 0, XCB_WINDOW_CLASS_INPUT_ONLY,
                      XCB_COPY_FROM_PARENT, 0, nullptr);
    return window;
}

xcb_window_t XConnection::selectionOwner(const QByteArray& selection) const {
    const auto cookie = xcb_get_selection_owner(raw(), atom(selection));
    return owned(xcb_get_selection_owner_reply(raw(), cookie, nullptr))->owner;
}

void XConnection::sync() const {
    owned(xcb_get_input_focus_reply(raw(), xcb_get_input_focus(raw()), nullptr));
}

} // namespace corvatto::test
