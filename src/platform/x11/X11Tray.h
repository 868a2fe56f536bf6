// The tray of an X11 desktop: one that shows StatusNotifierItems, which is met on the session bus, or an
// older one that embeds windows.
//
// Qt decides between the two once, for good, when the first icon is made, and by asking over the bus in a way
// that waits for the answer. So no icon is to be made before there is a tray, nor while the one on the bus
// does not answer.
#pragma once

#include "platform/Tray.h"
#include "platform/x11/XcbConnection.h"

#include <QDBusPendingCall>

namespace corvatto {

class X11Tray : public Tray, public XcbEventListener {
    Q_OBJECT

public:
    // `connection` must outlive this.
    explicit X11Tray(XcbConnection& connection);
    ~X11Tray() override;

    void find() override;
    void handleEvent(const xcb_generic_event_t& event) override;

private:
    void followBus();
    void followEmbeddingTrays();
    Q_SLOT void look();
    void announce();
    void answered(const QDBusPendingCall& call);
    bool hasEmbeddingTray() const;

    XcbConnection& m_connection;
    xcb_atom_t m_embeddingTray; // the selection that such a tray owns
    quint8 m_firstXFixesEvent = 0;
    bool m_isFound = false;
};

} // namespace corvatto
