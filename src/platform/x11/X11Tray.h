// The tray of an X11 desktop: one that shows StatusNotifierItems, or an older one that embeds windows.
//
// Qt chooses between the two kinds once, when the first icon is created, and asks over the bus in a way that
// blocks until the answer comes. So no icon may be created before there is a tray, nor while the one on the
// bus does not answer.
#pragma once

#include "platform/Tray.h"
#include "platform/freedesktop/StatusNotifierHost.h"
#include "platform/x11/XcbConnection.h"

namespace corvatto {

class X11Tray : public Tray, public XcbEventListener {
    Q_OBJECT

public:
    // `connection` must outlive this.
    explicit X11Tray(XcbConnection& connection);
    ~X11Tray() override;

    void startWatching() override;
    bool openMenu(QMenu& menu) override;

    void handleEvent(const xcb_generic_event_t& event) override;

private:
    void watchEmbeddingTrays();
    bool hasEmbeddingTray() const;
    void handleAnswer(StatusNotifierHost::Status status);

    XcbConnection& m_connection;
    xcb_atom_t m_embeddingTray; // the selection that such a tray owns
    quint8 m_firstXFixesEvent = 0;
    StatusNotifierHost m_statusNotifierHost;
    bool m_isAvailable = false;
};

} // namespace corvatto
