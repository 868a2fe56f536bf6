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

QByteArray XConnection::property(xcb_window_t window, const char* name) const {
    const auto cookie = xcb_get_property(raw(), 0, window, atom(name), XCB_GET_PROPERTY_TYPE_ANY, 0, 4096);
    const auto reply = owned(xcb_get_property_reply(raw(), cookie, nullptr));
    return reply ? QByteArray(static_cast<const char*>(xcb_get_property_value(reply.get())),
                              xcb_get_property_value_length(reply.get()))
                 : QByteArray();
}

void XConnection::sync() const {
    owned(xcb_get_input_focus_reply(raw(), xcb_get_input_focus(raw()), nullptr));
}

} // namespace corvatto::test
