#include "platform/dbus/KGlobalAccelHotKeyCenter.h"

namespace corvatto {

KGlobalAccelHotKeyCenter::KGlobalAccelHotKeyCenter(const QDBusConnection& bus) : m_bus(bus) {}

KGlobalAccelHotKeyCenter::~KGlobalAccelHotKeyCenter() = default;

void KGlobalAccelHotKeyCenter::start(quint32 keyCode, quint32 modifiers, EventHotKeyID /*id*/) {
    if (!m_bus.isConnected()) { // no answer would come, not even an error
        report(hotKeysUnavailableErr);
        return;
    }
    m_combinations = m_keyNames.qtCombinations(keyCode, modifiers);
    m_wasServed = false;
    m_compositor = std::make_unique<BusName>(m_bus, QStringLiteral("org.kde.KWin"));
    connect(m_compositor.get(), &BusName::ownerKnown, this, &KGlobalAccelHotKeyCenter::findService);
}

void KGlobalAccelHotKeyCenter::stop() {
    m_action.reset();
    m_service.reset();
    m_compositor.reset();
}

void KGlobalAccelHotKeyCenter::findService(const QString& compositor) {
    if (m_service) {
        return; // whatever becomes of the compositor, the service says what becomes of the shortcut
    }
    if (compositor.isEmpty()) {
        report(hotKeysUnavailableErr);
        return;
    }
    m_service = std::make_unique<BusName>(m_bus, QStringLiteral("org.kde.kglobalaccel"));
    connect(m_service.get(), &BusName::ownerKnown, this, &KGlobalAccelHotKeyCenter::followService);
}

void KGlobalAccelHotKeyCenter::followService(const QString& owner) {
    m_action.reset();
    if (owner.isEmpty()) {
        if (!m_wasServed) {
            report(hotKeysUnavailableErr);
        }
        return;
    }
    m_wasServed = true;
    if (m_combinations.isEmpty()) {
        report(eventHotKeyInvalidErr);
        return;
    }
    request(owner);
}

void KGlobalAccelHotKeyCenter::request(const QString& owner) {
    m_key.release();
    m_action = std::make_unique<KGlobalAccelAction>(m_bus, owner, m_combinations);
    const KGlobalAccelAction* action = m_action.get();
    connect(action, &KGlobalAccelAction::granted, this,
            [this](const QString& trigger) { report(noErr, trigger); });
    connect(action, &KGlobalAccelAction::taken, this, [this] { report(eventHotKeyExistsErr); });
    connect(action, &KGlobalAccelAction::unavailable, this, [this] { report(hotKeysUnavailableErr); });
    connect(action, &KGlobalAccelAction::released, this, [this] { m_key.release(); });
    connect(action, &KGlobalAccelAction::pressed, this, [this] {
        if (m_key.press()) {
            deliverPress();
        }
    });
}

} // namespace corvatto
