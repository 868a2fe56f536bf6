#include "platform/dbus/PortalHotKeyCenter.h"

namespace corvatto {

PortalHotKeyCenter::PortalHotKeyCenter(const QDBusConnection& bus, std::chrono::milliseconds replyLimit)
    : m_bus(bus), m_replyLimit(replyLimit) {}

PortalHotKeyCenter::~PortalHotKeyCenter() = default;

void PortalHotKeyCenter::start(quint32 keyCode, quint32 modifiers, EventHotKeyID /*id*/) {
    if (!m_bus.isConnected()) { // no answer would come, not even an error
        report(hotKeysUnavailableErr);
        return;
    }
    m_preferredTrigger = m_keyNames.portalTrigger(keyCode, modifiers);
    m_name = std::make_unique<BusName>(m_bus, QStringLiteral("org.freedesktop.portal.Desktop"));
    connect(m_name.get(), &BusName::ownerKnown, this, &PortalHotKeyCenter::followPortal);
    request();
}

void PortalHotKeyCenter::stop() {
    m_shortcut.reset();
    m_name.reset();
}

void PortalHotKeyCenter::followPortal(const QString& owner) {
    if (m_shortcut && (m_shortcut->owner().isEmpty() || m_shortcut->owner() == owner)) {
        return; // it is about to ask, or asks, this one
    }
    m_shortcut.reset();
    if (!owner.isEmpty()) {
        request();
    }
}

void PortalHotKeyCenter::request() {
    m_key.release();
    m_shortcut = std::make_unique<PortalShortcut>(m_bus, m_preferredTrigger, m_replyLimit);
    const PortalShortcut* shortcut = m_shortcut.get();
    connect(shortcut, &PortalShortcut::granted, this,
            [this](const QString& trigger) { report(noErr, trigger); });
    connect(shortcut, &PortalShortcut::refused, this, [this] { report(eventHotKeyExistsErr); });
    connect(shortcut, &PortalShortcut::unavailable, this, [this] { report(hotKeysUnavailableErr); });
    connect(shortcut, &PortalShortcut::released, this, [this] { m_key.release(); });
    connect(shortcut, &PortalShortcut::pressed, this, [this] {
        if (m_key.press()) {
            deliverPress();
        }
    });
}

} // namespace corvatto
