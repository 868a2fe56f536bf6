#include "platform/dbus/DesktopHotKeyCenter.h"

#include "base/Diagnostics.h"
#include "platform/dbus/KGlobalAccelHotKeyCenter.h"
#include "platform/dbus/PortalHotKeyCenter.h"

#include <utility>

namespace corvatto {

DesktopHotKeyCenter::DesktopHotKeyCenter(const QDBusConnection& bus, HotKeyCenter* fallback)
    : m_plasma(std::make_unique<KGlobalAccelHotKeyCenter>(bus)),
      m_portal(std::make_unique<PortalHotKeyCenter>(bus)), m_fallback(fallback) {
    addService(*m_plasma);
    addService(*m_portal);
    if (m_fallback != nullptr) {
        addService(*m_fallback);
    }
}

DesktopHotKeyCenter::~DesktopHotKeyCenter() {
    stop();
    for (const Service& service : m_services) {
        service.center.removeEventHandler(service.handler);
    }
}

void DesktopHotKeyCenter::addService(HotKeyCenter& center) {
    Service service{center};
    const auto handle = [this] {
        deliverPress();
        return noErr;
    };
    center.installEventHandler(handle, service.handler);
    m_services.push_back(service);
}

void DesktopHotKeyCenter::setKeymap(const QByteArray& keymap) {
    const auto before = std::exchange(m_keyNames, KeyNames(keymap));
    m_plasma->setKeyNames(m_keyNames);
    m_portal->setKeyNames(m_keyNames);
    const bool goesByNames = m_asked != nullptr && m_asked != m_fallback;
    if (goesByNames &&
        m_keyNames.qtCombinations(m_keyCode, m_modifiers) != before.qtCombinations(m_keyCode, m_modifiers)) {
        stop();
        ask(0);
    }
}

void DesktopHotKeyCenter::start(quint32 keyCode, quint32 modifiers, EventHotKeyID id) {
    m_keyCode = keyCode;
    m_modifiers = modifiers;
    m_id = id;
    ask(0);
}

void DesktopHotKeyCenter::stop() {
    if (m_asked != nullptr) {
        std::exchange(m_asked, nullptr)->unregisterEventHotKey(std::exchange(m_hotKey, 0));
    }
}

void DesktopHotKeyCenter::ask(std::size_t index) {
    m_asked = nullptr;
    m_hotKey = 0;
    if (index == m_services.size()) {
        if (m_fallback == nullptr) {
            printAdvice();
        }
        report(hotKeysUnavailableErr);
        return;
    }
    HotKeyCenter& center = m_services[index].center;
    if (&center == m_fallback) {
        printAdvice();
    }
    m_asked = &center;
    const EventHotKeyRef hotKey = center.registerEventHotKey(
        m_keyCode, m_modifiers, m_id, [this, index](HotKeyStatus status, const QString& trigger) {
            if (status == hotKeysUnavailableErr) {
                ask(index + 1);
            } else {
                if (status != noErr) {
                    m_asked = nullptr; // it has ended the registration
                }
                report(status, trigger);
            }
        });
    // It may have answered already, and the next one be asked or the registration be over.
    if (m_asked == &center) {
        m_hotKey = hotKey;
    } else if (hotKey != 0) {
        center.unregisterEventHotKey(hotKey);
    }
}

void DesktopHotKeyCenter::printAdvice() {
    const QString binding = m_keyNames.swayBinding(m_keyCode, m_modifiers);
    const bool isSway = qEnvironmentVariableIsSet("SWAYSOCK") && !binding.isEmpty();
    const QString what = m_fallback == nullptr
                             ? QStringLiteral("This desktop grants no global shortcuts.")
                             : QStringLiteral("This desktop grants global shortcuts in X11 windows only.");
    const QString instead =
        isSway ? QStringLiteral("For its configuration: bindsym %1 exec corvatto --toggle").arg(binding)
               : QStringLiteral("Bind a key in its settings to: corvatto --toggle");
    const QString line = QStringLiteral("[HotKeyCenter] %1 %2").arg(what, instead);
    if (line != std::exchange(m_advice, line)) {
        printLine(line);
    }
}

} // namespace corvatto
