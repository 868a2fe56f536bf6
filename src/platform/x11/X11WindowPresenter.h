// Presents the program's windows to an X11 window manager: sets the states that Qt has no names for, and
// asks for the keyboard.
//
// Window managers lose requests: states that are set while a hiding before is still on its way, and, at the
// start of a session, the request to map the window. Some put a new window where they like. All of it is
// asked for again, a limited number of times.
#pragma once

#include "platform/Screens.h"
#include "platform/WindowPresenter.h"
#include "platform/x11/X11WindowManager.h"

#include <QPointer>
#include <QTimer>
#include <QWidget>

#include <array>

namespace corvatto {

class X11WindowPresenter : public QObject, public WindowPresenter {
    Q_OBJECT

public:
    // Both outlive this, which takes the screens' `didChange`.
    X11WindowPresenter(XcbConnection& connection, Screens& screens);
    ~X11WindowPresenter() override;

    void becomeAccessory() override;
    bool showPanel(QWidget& panel) override;
    void hidePanel(QWidget& panel) override;
    void activate(QWidget& window) override;
    void setTakesAllKeys(QWidget& /*window*/, bool /*takes*/) override {} // managers let no program ask

    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void prepareWindow(QWidget& window);
    void place(const Screen& screen);
    void placeAgain();
    void keepInPlace();
    void preparePanel();
    void requestStatesAndFocus();
    void remapIfLost();
    bool isUnmapped() const;
    void bringToCurrentDesktop(const QWidget& window);
    void requestFocus(QWidget& window);
    void focusWhenShown(QWidget& window);

    std::array<xcb_atom_t, 4> panelStates() const; // the last two are an accessory's
    void writeStates(const QWidget& window, const xcb_atom_t* states, quint32 count) const;

    XcbConnection& m_connection;
    Screens& m_screens;
    X11WindowManager m_windowManager;
    QPointer<QWidget> m_panel; // the one that was shown last
    QPoint m_screenOrigin;     // of the screen that it was placed on
    QRect m_place;             // of the panel
    QTimer m_placingTimer, m_remapTimer;
    int m_placingAttemptsLeft = 0, m_remapAttemptsLeft = 0;
    QPointer<QWidget> m_toFocus; // as soon as it is on the screen, without the help of a window manager
};

} // namespace corvatto
