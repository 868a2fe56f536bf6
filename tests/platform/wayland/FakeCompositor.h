// A compositor with a seat and its clipboard, and nothing else, which the test plays together with the other
// programs. It runs in the event loop of the test, so that the test decides in which order things happen.
#pragma once

#include "WaylandServer.h"
#include "base/FileDescriptor.h"
#include "platform/wayland/CompositorProbe.h"

#include <QByteArrayList>

#include <wayland-server-protocol.h>

#include <functional>
#include <map>
#include <memory>
#include <optional>

struct wl_global;
struct wl_protocol_logger;
struct wl_resource;

namespace corvatto::test {

class FakeCompositor {
public:
    // Offers data control under that name.
    explicit FakeCompositor(QByteArray manager = "zwlr_data_control_manager_v1", int version = 2);
    ~FakeCompositor();

    // The connection that is tested. Before it is opened again, the one before is to be gone.
    std::unique_ptr<WaylandConnection> connect() { return m_server.connect(); }
    void disconnect();

    // Announces data control under that name, too, and refuses it to all.
    void announceInVain(const QByteArray& manager);
    CompositorAbilities probe();

    // Another program copies, or the clipboard is emptied. `asked` is called with each type that the program
    // is asked for, and the descriptor that it is to write to; otherwise it writes the flavour.
    using Flavours = std::map<QByteArray, QByteArray>;
    using Asked = std::function<void(const QByteArray& type, FileDescriptor receiver)>;
    void copy(const Flavours& flavours, Asked asked = {});
    void empty();

    QByteArrayList requests; // what programs that copied were asked for, in order

    // What the tested program offers; null when it does not.
    std::optional<QByteArrayList> offered() const;
    // Another program asks for it, and reads from the result.
    FileDescriptor ask(const QByteArray& type);

    bool refusesWrites = false;
    bool announcesOwnWrites = true;
    int writes = 0; // that it has heard of
    int primaryWrites = 0;
    int offers = 0;               // that it has told of and that are not given back
    std::function<void()> onSync; // before it is answered

    // As another program, for the primary selection. Whether the tested program is told.
    bool marksText();
    void removeSeat();
    void addSeat();
    // A keyboard is plugged into the seat, or out.
    void setKeyboard(bool isThere);
    bool isKeyboardWanted() const { return m_keyboard != nullptr; } // by the tested program
    void sendKeymap(const QByteArray& text, quint32 size, quint32 format = WL_KEYBOARD_KEYMAP_FORMAT_XKB_V1);
    void finishDevice(); // the clipboard of this seat is at its end

private:
    struct Requests;
    struct Source;

    void change(bool isOwned);
    void announce();
    void cancelSource();
    wl_resource* newOffer();

    QByteArray m_managerName;
    wl_global* m_seat = nullptr;
    QList<wl_resource*> m_boundSeats;
    wl_resource* m_keyboard = nullptr;
    wl_resource* m_device = nullptr;
    Flavours m_flavours;    // of another program
    bool m_isOwned = false; // by another program
    Asked m_asked;
    Source* m_source = nullptr; // of the tested program, when that owns the clipboard
    int m_generation = 0;       // offers of earlier ones are dead
    wl_protocol_logger* m_logger;
    WaylandServer m_server; // goes first: the resources of its clients refer to all else
};

void writeAll(const FileDescriptor& to, const QByteArray& bytes);

} // namespace corvatto::test
