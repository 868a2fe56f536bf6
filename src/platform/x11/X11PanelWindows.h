// The dealings of the program's windows with an X11 window manager: the states that Qt has no names for, and
// the keyboard.
#pragma once

#include "platform/PanelWindows.h"
#include "platform/x11/XcbConnection.h"

#include <QPointer>
#include <QWidget>

#include <array>

namespace corvatto {

class X11PanelWindows : public QObject, public PanelWindows {
    Q_OBJECT

public:
    // `connection` must outlive this.
    explicit X11PanelWindows(XcbConnection& connection);

    void becomeAccessory() override;
    void prepareToShow(QWidget& panel) override;
    void confirmShown(QWidget& panel) override;
    bool askAgainToShow(QWidget& panel) override;
    void activate(QWidget& panel) override;

    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    std::array<xcb_atom_t, 4> states() const; // of a panel; the last two are an accessory's
    void prepareStates(const QWidget& window, const xcb_atom_t* states, quint32 count) const;
    void askWindowManager(QWidget& panel, const QByteArray& message,
                          const std::array<quint32, 5>& data) const;

    XcbConnection& m_connection;
    QPointer<QWidget> m_panel; // the one that was prepared
};

} // namespace corvatto
