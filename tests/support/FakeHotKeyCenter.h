// A keyboard on which the test presses the shortcut.
#pragma once

#include "platform/HotKeyCenter.h"

#include <QStringList>

#include <map>
#include <utility>

namespace corvatto::test {

class FakeHotKeyCenter : public HotKeyCenter {
public:
    using Combination = std::pair<quint32, quint32>; // key code and modifiers

    std::map<EventHandlerRef, std::function<HotKeyStatus()>> handlers;
    std::map<EventHotKeyRef, Combination> hotKeys;
    QStringList removals; // what was taken away, in order

    // Presses every registered combination once.
    void press() {
        for (std::size_t i = 0; i < hotKeys.size(); ++i) {
            for (const auto& [ref, handler] : handlers) {
                handler();
            }
        }
    }

    HotKeyStatus installEventHandler(std::function<HotKeyStatus()> handler, EventHandlerRef& out) override {
        out = ++m_lastRef;
        handlers[out] = std::move(handler);
        return noErr;
    }
    HotKeyStatus removeEventHandler(EventHandlerRef handler) override {
        removals << QStringLiteral("handler");
        return handlers.erase(handler) == 1 ? noErr : eventHotKeyInvalidErr;
    }
    HotKeyStatus registerEventHotKey(quint32 keyCode, quint32 modifiers, EventHotKeyID /*id*/,
                                     EventHotKeyRef& out) override {
        out = ++m_lastRef;
        hotKeys[out] = {keyCode, modifiers};
        return noErr;
    }
    HotKeyStatus unregisterEventHotKey(EventHotKeyRef hotKey) override {
        removals << QStringLiteral("hot key");
        return hotKeys.erase(hotKey) == 1 ? noErr : eventHotKeyInvalidErr;
    }

private:
    quint32 m_lastRef = 0;
};

} // namespace corvatto::test
