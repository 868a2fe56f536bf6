// The floating panel's dealings with an X11 window manager: the states that Qt has no names for, and the
// keyboard.
#pragma once

#include "platform/PanelWindows.h"
#include "platform/x11/XcbConnection.h"

#include <array>

namespace corvatto {

class X11PanelWindows : public PanelWindows {
public:
    // `connection` must outlive this.
    explicit X11PanelWindows(XcbConnection& connection);

    void prepareToShow(QWidget& panel) override;
    void confirmShown(QWidget& panel) override;
    bool askAgainToShow(QWidget& panel) override;
    void activate(QWidget& panel) override;

private:
    std::array<xcb_atom_t, 4> states() const;
    void askWindowManager(QWidget& panel, const QByteArray& message,
                          const std::array<quint32, 5>& data) const;

    XcbConnection& m_connection;
};

} // namespace corvatto
