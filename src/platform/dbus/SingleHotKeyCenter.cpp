#include "platform/dbus/SingleHotKeyCenter.h"

#include <utility>

namespace corvatto {

HotKeyStatus SingleHotKeyCenter::installEventHandler(std::function<HotKeyStatus()> handler,
                                                     EventHandlerRef& out) {
    out = ++m_lastRef;
    m_handlers.emplace(out, std::move(handler));
    return noErr;
}

HotKeyStatus SingleHotKeyCenter::removeEventHandler(EventHandlerRef handler) {
    return m_handlers.erase(handler) == 1 ? noErr : eventHotKeyInvalidErr;
}

EventHotKeyRef SingleHotKeyCenter::registerEventHotKey(quint32 keyCode, quint32 modifiers, EventHotKeyID id,
                                                       StatusHandler done) {
    if (m_registration) {
        done(eventHotKeyInvalidErr, {});
        return 0;
    }
    const EventHotKeyRef ref = ++m_lastRef;
    m_registration = Registration{ref, std::move(done)};
    start(keyCode, modifiers, id);
    return m_registration && m_registration->ref == ref ? ref : 0;
}

HotKeyStatus SingleHotKeyCenter::unregisterEventHotKey(EventHotKeyRef hotKey) {
    if (!m_registration || m_registration->ref != hotKey) {
        return eventHotKeyInvalidErr;
    }
    m_registration.reset();
    stop();
    return noErr;
}

void SingleHotKeyCenter::report(HotKeyStatus status, const QString& trigger) {
    if (!m_registration) {
        return;
    }
    const StatusHandler done = m_registration->done; // it may end the registration, or make another
    if (status != noErr) {
        m_registration.reset();
        stop();
    }
    done(status, trigger);
}

void SingleHotKeyCenter::deliverPress() {
    const auto handlers = m_handlers; // a handler may remove itself or others
    for (const auto& [ref, handler] : handlers) {
        handler();
    }
}

} // namespace corvatto
