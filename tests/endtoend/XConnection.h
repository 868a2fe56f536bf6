// A connection to an X server with names instead of atoms. Calls return when the server has answered.
#pragma once

#include <QByteArray>

#include <xcb/xcb.h>

#include <cstdlib>
#include <memory>

namespace corvatto::test {

// Of replies and events, which come from malloc().
template <typename Reply>
std::unique_ptr<Reply, decltype(&std::free)> owned(Reply* reply) {
    return {reply, &std::free};
}

class XConnection {
public:
    // Throws std::runtime_error when the display cannot be reached. An empty name stands for $DISPLAY.
    explicit XConnection(const QByteArray& display);

    xcb_connection_t* raw() const { return m_connection.get(); }
    xcb_window_t root() const { return m_screen->root; }
    const xcb_screen_t& screen() const { return *m_screen; }
    xcb_atom_t atom(const QByteArray& name) const;
    QByteArray name(xcb_atom_t atom) const;
    // Null when there is no such property, or no window. Taking it deletes it, as who waits for it does.
    QByteArray property(xcb_window_t window, const char* name, bool isTaken = false) const;
    xcb_window_t createMessageWindow() const;                       // which is never shown
    xcb_window_t selectionOwner(const QByteArray& selection) const; // 0 when it has none
    void sync() const; // waits until the server has taken all requests

private:
    std::unique_ptr<xcb_connection_t, decltype(&xcb_disconnect)> m_connection;
    const xcb_screen_t* m_screen;
};

} // namespace corvatto::test
