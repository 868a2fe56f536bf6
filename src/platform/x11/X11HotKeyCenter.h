// System-wide shortcuts by passive key grabs on the root window.
//
// A grab names an exact set of modifiers, locks included, so each hot key is grabbed once for every state of
// Caps Lock, Num Lock and Scroll Lock. The keyboard mapping decides which modifier bits stand for Super, Alt
// and the locks; when it changes, the keys are grabbed again.
#pragma once

#include "platform/HotKeyCenter.h"
#include "platform/x11/XcbConnection.h"

#include <map>

namespace corvatto {

class X11HotKeyCenter : public HotKeyCenter, public XcbEventListener {
public:
    explicit X11HotKeyCenter(XcbConnection& connection);
    ~X11HotKeyCenter() override;

    HotKeyStatus installEventHandler(std::function<HotKeyStatus()> handler, EventHandlerRef& out) override;
    HotKeyStatus removeEventHandler(EventHandlerRef handler) override;
    EventHotKeyRef registerEventHotKey(quint32 keyCode, quint32 modifiers, EventHotKeyID id,
                                       StatusHandler done) override;
    HotKeyStatus unregisterEventHotKey(EventHotKeyRef hotKey) override;

    void handleEvent(const xcb_generic_event_t& event) override;

private:
    struct HotKey {
        xcb_keycode_t keycode;
        quint32 modifiers;
        quint16 grabbedState = 0; // the X modifier bits of the grab, without locks
        bool isDown = false;
        xcb_timestamp_t lastPress = 0; // the server's milliseconds, which wrap
    };

    void useXkb();
    void readModifierMapping();
    quint16 stateFor(quint32 modifiers) const;
    std::vector<quint16> lockStates() const;
    std::vector<quint16> grabStates(const HotKey& hotKey) const;
    HotKeyStatus grab(HotKey& hotKey);
    void ungrab(xcb_keycode_t keycode, const std::vector<quint16>& states);
    void followMapping();
    void pressed(const xcb_key_press_event_t& event);
    void released(const xcb_key_release_event_t& event);

    XcbConnection& m_connection;
    int m_xkbEvent = 0;  // the type of all events of XKB; 0 without XKB
    quint16 m_super = 0; // modifier bits
    quint16 m_alt = 0;
    quint16 m_numLock = 0;
    quint16 m_scrollLock = 0;
    std::map<EventHandlerRef, std::function<HotKeyStatus()>> m_handlers;
    std::map<EventHotKeyRef, HotKey> m_hotKeys;
    quint32 m_lastRef = 0;
};

} // namespace corvatto
