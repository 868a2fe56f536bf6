// The shortcut on a Wayland desktop, by the first service that grants one: Plasma's, the desktop portal, or
// what the session has besides. Where nobody does, a printed line says what to bind instead.
#pragma once

#include "platform/dbus/KeyNames.h"
#include "platform/dbus/SingleHotKeyCenter.h"

#include <QDBusConnection>

#include <memory>
#include <vector>

namespace corvatto {

class KGlobalAccelHotKeyCenter;
class PortalHotKeyCenter;

// The services are asked anew for each registration, and the next one is asked when one ends its service.
// Main thread.
class DesktopHotKeyCenter : public SingleHotKeyCenter {
    Q_OBJECT

public:
    // `fallback` is asked last, after a printed line, since it works in some windows only. May be null;
    // outlives the center.
    explicit DesktopHotKeyCenter(const QDBusConnection& bus, HotKeyCenter* fallback = nullptr);
    ~DesktopHotKeyCenter() override;

    // Names keys by that keymap, in the text format of XKB, from now on. What is registered is asked for
    // again if it has other names there.
    void setKeymap(const QByteArray& keymap);

protected:
    void start(quint32 keyCode, quint32 modifiers, EventHotKeyID id) override;
    void stop() override;

private:
    struct Service {
        HotKeyCenter& center;
        EventHandlerRef handler = 0;
    };

    void addService(HotKeyCenter& center);
    void ask(std::size_t service);
    void printAdvice();

    KeyNames m_keyNames;
    std::unique_ptr<KGlobalAccelHotKeyCenter> m_plasma;
    std::unique_ptr<PortalHotKeyCenter> m_portal;
    HotKeyCenter* m_fallback;
    std::vector<Service> m_services; // in the order in which they are asked
    quint32 m_keyCode = 0;
    quint32 m_modifiers = 0;
    EventHotKeyID m_id;
    HotKeyCenter* m_asked = nullptr;
    EventHotKeyRef m_hotKey = 0; // of the service that is asked, or has granted
    QString m_advice;            // that was printed last
};

} // namespace corvatto
