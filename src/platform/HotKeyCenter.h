// System-wide shortcuts: a key and modifiers that reach this program whatever application is in front.
#pragma once

#include <QString>

#include <functional>

namespace corvatto {

// The result of an operation: noErr, or a negative code.
using HotKeyStatus = qint32;
constexpr HotKeyStatus noErr = 0;
constexpr HotKeyStatus eventHotKeyExistsErr = -9878; // another program has it, or the user or desktop refuses
constexpr HotKeyStatus eventHotKeyInvalidErr = -9879; // no key of this keyboard, or not a combination
constexpr HotKeyStatus hotKeysUnavailableErr = -9868; // nobody grants any shortcuts here

// The modifier mask of a hot key.
enum HotKeyModifier : quint32 { commandKey = 256, shiftKey = 512, optionKey = 2048, controlKey = 4096 };

using EventHandlerRef = quint32; // 0 is none
using EventHotKeyRef = quint32;  // 0 is none

// Identifies a registration to its owner.
struct EventHotKeyID {
    quint32 signature = 0;
    quint32 id = 0;
};

class HotKeyCenter {
public:
    // What has become of a registration. `trigger` is empty when it is triggered as was asked; else it says,
    // in the desktop's words, what triggers it.
    using StatusHandler = std::function<void(HotKeyStatus status, const QString& trigger)>;

    HotKeyCenter() = default;
    virtual ~HotKeyCenter() = default;
    HotKeyCenter(const HotKeyCenter&) = delete;
    HotKeyCenter& operator=(const HotKeyCenter&) = delete;

    // Has `handler` called on the main thread, once for every press of a registered hot key: holding the key
    // does not repeat it. The handler returns noErr when it has handled the press.
    virtual HotKeyStatus installEventHandler(std::function<HotKeyStatus()> handler, EventHandlerRef& out) = 0;
    virtual HotKeyStatus removeEventHandler(EventHandlerRef handler) = 0;

    // Starts a registration. `keyCode` is a virtual key code (KeyEvent.h): a position on the keyboard,
    // whatever letter the layout puts there. `modifiers` is a mask of HotKeyModifier.
    //
    // `done` is called with the result: before this returns where the system answers at once, else from the
    // event loop, because somebody may have to be asked first. It is called again when the desktop changes
    // the trigger or takes it away. A registration that fails is over with that call; the reference is 0 if
    // it has failed before this returns.
    virtual EventHotKeyRef registerEventHotKey(quint32 keyCode, quint32 modifiers, EventHotKeyID id,
                                               StatusHandler done) = 0;

    // Ends a registration, also one whose result is still to come: its `done` is not called any more.
    virtual HotKeyStatus unregisterEventHotKey(EventHotKeyRef hotKey) = 0;
};

} // namespace corvatto
