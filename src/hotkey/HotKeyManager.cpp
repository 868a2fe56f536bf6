#include "hotkey/HotKeyManager.h"

#include "base/Diagnostics.h"
#include "settings/SettingsKeys.h"

#include <limits>

namespace corvatto {
namespace {

constexpr EventHotKeyID hotKeyIdentity{1, 1};

// Values that no key code or mask can have come from a settings file edited by hand; the default serves
// better than no shortcut.
quint32 validOr(qint64 value, qint64 fallback) {
    const bool valid = value >= 0 && value <= std::numeric_limits<quint32>::max();
    return static_cast<quint32>(valid ? value : fallback);
}

} // namespace

StoredHotKey withDefaults(qint64 keyCode, qint64 modifiers) {
    return {keyCode == 0 ? SettingsKeys::defaultHotkeyKeyCode : keyCode,
            modifiers == 0 ? SettingsKeys::defaultHotkeyModifiers : modifiers};
}

HotKeyManager::HotKeyManager(HotKeyCenter& center, const UserDefaults& defaults)
    : m_center(center), m_defaults(defaults) {}

HotKeyManager::~HotKeyManager() {
    unregister();
}

void HotKeyManager::registerStoredHotKey() {
    const StoredHotKey stored = withDefaults(m_defaults.integer(SettingsKeys::hotkeyKeyCode),
                                             m_defaults.integer(SettingsKeys::hotkeyModifiers));
    registerHotKey(validOr(stored.keyCode, SettingsKeys::defaultHotkeyKeyCode),
                   validOr(stored.modifiers, SettingsKeys::defaultHotkeyModifiers));
}

void HotKeyManager::reregister(qint64 keyCode, qint64 modifiers) {
    unregister();
    registerHotKey(validOr(keyCode, SettingsKeys::defaultHotkeyKeyCode),
                   validOr(modifiers, SettingsKeys::defaultHotkeyModifiers));
}

void HotKeyManager::unregister() {
    if (m_hotKeyRef) {
        m_center.unregisterEventHotKey(*m_hotKeyRef);
        m_hotKeyRef.reset();
    }
    if (m_handlerRef) {
        m_center.removeEventHandler(*m_handlerRef);
        m_handlerRef.reset();
    }
}

void HotKeyManager::registerHotKey(quint32 keyCode, quint32 modifiers) {
    EventHandlerRef handler{};
    const auto handle = [this] {
        // The callback shows windows and may replace the registration: not inside the delivery of the press.
        QMetaObject::invokeMethod(
            this,
            [this] {
                if (onHotKeyPressed) {
                    onHotKeyPressed();
                }
            },
            Qt::QueuedConnection);
        return noErr;
    };
    if (const HotKeyStatus status = m_center.installEventHandler(handle, handler); status != noErr) {
        printLine(
            QStringLiteral("[HotKeyManager] ERROR: InstallEventHandler failed with status %1").arg(status));
        return;
    }
    m_handlerRef = handler;

    EventHotKeyRef hotKey{};
    const HotKeyStatus status = m_center.registerEventHotKey(keyCode, modifiers, hotKeyIdentity, hotKey);
    if (status != noErr) {
        printLine(
            QStringLiteral("[HotKeyManager] ERROR: RegisterEventHotKey failed with status %1").arg(status));
        return;
    }
    m_hotKeyRef = hotKey;
}

} // namespace corvatto
