// What services of desktops have in common that grant a program a shortcut: the program's handlers, its one
// registration, and its presses. How the service is asked is left to subclasses.
#pragma once

#include "platform/HotKeyCenter.h"

#include <QObject>

#include <map>
#include <optional>

namespace corvatto {

// Desktops know a shortcut by a name that stands for what it does. Here that is one thing, so only one hot
// key is registered at a time: another one is refused with eventHotKeyInvalidErr. Main thread.
class SingleHotKeyCenter : public QObject, public HotKeyCenter {
    Q_OBJECT

public:
    HotKeyStatus installEventHandler(std::function<HotKeyStatus()> handler, EventHandlerRef& out) override;
    HotKeyStatus removeEventHandler(EventHandlerRef handler) override;
    EventHotKeyRef registerEventHotKey(quint32 keyCode, quint32 modifiers, EventHotKeyID id,
                                       StatusHandler done) override;
    HotKeyStatus unregisterEventHotKey(EventHotKeyRef hotKey) override;

protected:
    // Asks the desktop. Called while nothing is registered.
    virtual void start(quint32 keyCode, quint32 modifiers, EventHotKeyID id) = 0;
    // Releases the shortcut, or takes the question back.
    virtual void stop() = 0;

    // Passes on what the desktop says. A status that is not noErr ends the registration, and stops.
    void report(HotKeyStatus status, const QString& trigger = {});
    // Calls the handlers.
    void deliverPress();

private:
    struct Registration {
        EventHotKeyRef ref;
        StatusHandler done;
    };

    std::map<EventHandlerRef, std::function<HotKeyStatus()>> m_handlers;
    std::optional<Registration> m_registration;
    quint32 m_lastRef = 0;
};

} // namespace corvatto
