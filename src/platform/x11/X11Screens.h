// The screens with what the bars on an X11 desktop leave free of each of them. Qt knows one work area for all
// screens together, and leaves it out when there are several.
#pragma once

#include "platform/Screens.h"
#include "platform/x11/WorkArea.h"
#include "platform/x11/XcbConnection.h"

namespace corvatto {

// Main thread.
class X11Screens : public Screens, private XcbEventListener {
public:
    // `screens`, of which all but the visible frames is taken, and the connection outlive this, which takes
    // the `didChange` of `screens`.
    X11Screens(XcbConnection& connection, Screens& screens);
    ~X11Screens() override;

    QPoint mouseLocation() const override { return m_screens.mouseLocation(); }
    // Both ask the server about all windows, with answers that it has at hand.
    std::vector<Screen> screens() const override;
    std::optional<Screen> mainScreen() const override;

private:
    void handleEvent(const xcb_generic_event_t& event) override;
    Screen withVisibleFrame(const Screen& screen, bool isOnly, const std::vector<Strut>& struts) const;
    std::vector<xcb_window_t> windows() const;
    std::vector<Strut> struts() const;
    QRect workArea() const;

    XcbConnection& m_connection;
    Screens& m_screens;
};

} // namespace corvatto
