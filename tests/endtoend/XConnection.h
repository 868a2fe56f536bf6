// A connection to an X server with names instead of atoms. Calls return when the server has answered.
#pragma once

#include <QByteArray>
#include <QList>

#include <xcb/xcb.h>

#include <cstdlib>
#include <memory>

namespace corvatto::test {

// Of replies and events, which come from malloc().
template <typename Reply>
std::unique_ptr<Reply, decltype(&std::free)> owned(Reply* reply) {
    return {reply, &std::free};
}

// A property's numbers, of 32 bits each.
inline QList<quint32> valuesIn(const QByteArray& property) {
    const auto* first = reinterpret_cast<const quint32*>(property.constData());
    return {first, first + property.size() / qsizetype{sizeof(quint32)}};
}

class XConnection {
public:
    // Throws std::runtime_error when the display cannot be reached. An empty name stands for $DISPLAY.
    explicit XConnection(const QByteArray& display);

    xcb_connection_t* raw() const { return m_connection.get(); }
    xcb_window_t root() const { return m_screen->root; }
    xcb_atom_t atom(const QByteArray& name) const;
    QByteArray name(xcb_atom_t atom) const;
    // Null when there is no such property, or no window. Taking it deletes it, as who waits for it does.
    QByteArray property(xcb_window_t window, const char* name, bool isTaken = false) const;
    // The values are bytes, or numbers of 32 bits. The server may not have taken them when this returns.
    template <typename Values>
    void put(xcb_window_t to, xcb_atom_t property, xcb_atom_t type, const Values& values) const {
        xcb_change_property(raw(), XCB_PROP_MODE_REPLACE, to, property, type, 8 * sizeof(*values.data()),
                            static_cast<quint32>(values.size()), values.data());
    }
    void watchProperties(xcb_window_t window) const;
    // What tells a requestor of a selection where the answer is, or by XCB_ATOM_NONE that there is none.
    static xcb_generic_event_t notification(const xcb_selection_request_event_t& request,
                                            xcb_atom_t property);
    void answer(const xcb_selection_request_event_t& request, xcb_atom_t property) const;
    xcb_window_t createMessageWindow() const;                       // which is never shown
    xcb_window_t selectionOwner(const QByteArray& selection) const; // 0 when it has none
    void sync() const; // waits until the server has taken all requests

private:
    std::unique_ptr<xcb_connection_t, decltype(&xcb_disconnect)> m_connection;
    const xcb_screen_t* m_screen;
};

} // namespace corvatto::test
