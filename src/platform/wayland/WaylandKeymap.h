// The keymap of the seat's keyboard, which says what symbols its keys produce.
//
// Compositors send it to every client, whichever window has the keyboard. Which of its layouts is in use they
// tell only the one that has.
#pragma once

#include "platform/wayland/WaylandConnection.h"

namespace corvatto {

// Main thread.
class WaylandKeymap : public QObject {
    Q_OBJECT

public:
    // The connection outlives the object.
    explicit WaylandKeymap(WaylandConnection& connection);
    ~WaylandKeymap() override;

Q_SIGNALS:
    // From the event loop: the keymap in the text format of XKB, at first and whenever it changes.
    void changed(const QByteArray& keymap);

private:
    struct Listeners;

    void followCapabilities(quint32 capabilities);
    void read(quint32 format, int file, quint32 size);

    WaylandConnection& m_connection;
    wl_seat* m_seat;
    wl_keyboard* m_keyboard = nullptr; // null while the seat has none
    QByteArray m_keymap;
};

} // namespace corvatto
