// A keyboard on which the test presses the shortcut, and says what becomes of each registration.
#pragma once

#include "platform/HotKeyCenter.h"

#include <QStringList>

#include <map>

namespace corvatto::test {

class FakeHotKeyCenter : public HotKeyCenter {
public:
    HotKeyStatus handlerStatus = noErr; // what installing a handler gives
    std::map<EventHandlerRef, std::function<HotKeyStatus()>> handlers;
    std::map<EventHotKeyRef, StatusHandler> hotKeys;
    QStringList removals; // what was taken away, in order

    // Presses every registered combination once.
    void press() {
        for (std::size_t i = 0; i < hotKeys.size(); ++i) {
            for (const auto& [ref, handler] : handlers) {
                handler();
            }
        }
    }
    // Says what triggers the registrations.
    void grant(const QString& trigger) {
        for (const auto& [ref, done] : hotKeys) {
            done(noErr, trigger);
        }
    }
    // Ends the registrations with that status.
    void refuse(HotKeyStatus status) {
        for (const auto& [ref, done] : std::exchange(hotKeys, {})) {
            done(status, {});
        }
    }

    HotKeyStatus installEventHandler(std::function<HotKeyStatus()> handler, EventHandlerRef& out) override {
        if (handlerStatus == noErr) {
            out = ++m_lastRef;
            handlers[out] = std::move(handler);
        }
        return handlerStatus;
    }
    HotKeyStatus removeEventHandler(EventHandlerRef handler) override {
        removals << QStringLiteral("handler");
        return handlers.erase(handler) == 1 ? noErr : eventHotKeyInvalidErr;
    }
    EventHotKeyRef registerEventHotKey(quint32 /*keyCode*/, quint32 /*modifiers*/, EventHotKeyID /*id*/,
                                       StatusHandler done) override {
        hotKeys[++m_lastRef] = std::move(done);
        return m_lastRef;
    }
    HotKeyStatus unregisterEventHotKey(EventHotKeyRef hotKey) override {
        removals << QStringLiteral("hot key");
        return hotKeys.erase(hotKey) == 1 ? noErr : eventHotKeyInvalidErr;
    }

private:
    quint32 m_lastRef = 0;
};

} // namespace corvatto::test
