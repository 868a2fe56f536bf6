// The floating panel's dealings with an X11 window manager: the states that Qt has no names for, and the
// keyboard.
#pragma once

#include "platform/PanelWindows.h"
#include "platform/x11/XcbConnection.h"

namespace corvatto {

class X11PanelWindows : public PanelWindows {
public:
    // `connection` must outlive this.
    explicit X11PanelWindows(XcbConnection& connection);

    void prepareToShow(QWidget& panel) override;
    void activate(QWidget& panel) override;

private:
    XcbConnection& m_connection;
};

} // namespace corvatto
