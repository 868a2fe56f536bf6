#include "hotkey/HotKeyManager.h"

#include "base/Diagnostics.h"
#include "settings/Shortcut.h"

#include <utility>

namespace corvatto {
namespace {

constexpr EventHotKeyID hotKeyIdentity{1, 1};

} // namespace

HotKeyManager::HotKeyManager(HotKeyCenter& center, const UserDefaults& defaults)
    : m_center(center), m_defaults(defaults) {}

HotKeyManager::~HotKeyManager() {
    unregister();
}

void HotKeyManager::registerStoredHotKey() {
    const Shortcut shortcut = registeredShortcut(m_defaults);
    registerHotKey(shortcut.keyCode, shortcut.modifiers);
}

void HotKeyManager::reregister(qint64 keyCode, qint64 modifiers) {
    unregister();
    registerHotKey(keyCode, modifiers);
}

void HotKeyManager::registerIfMissing() {
    if (m_hotKeyRef == 0) {
        unregister();
        registerStoredHotKey();
    }
}

void HotKeyManager::unregister() {
    if (m_hotKeyRef != 0) {
        m_center.unregisterEventHotKey(std::exchange(m_hotKeyRef, 0));
        setTrigger({});
    }
    if (m_handlerRef != 0) {
        m_center.removeEventHandler(std::exchange(m_handlerRef, 0));
    }
}

void HotKeyManager::registerHotKey(qint64 keyCode, qint64 modifiers) {
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
    EventHandlerRef handler = 0;
    if (const HotKeyStatus status = m_center.installEventHandler(handle, handler); status != noErr) {
        printLine(
            QStringLiteral("[HotKeyManager] ERROR: InstallEventHandler failed with status %1").arg(status));
        return;
    }
    m_handlerRef = handler;
    m_hotKeyRef = m_center.registerEventHotKey(
        static_cast<quint32>(keyCode), static_cast<quint32>(modifiers), hotKeyIdentity,
        [this](HotKeyStatus status, const QString& trigger) {
            if (status != noErr) {
                m_hotKeyRef = 0;
            }
            setTrigger(trigger);
            // Where there are no shortcuts at all, the center has said what to do instead.
            if (status != noErr && status != hotKeysUnavailableErr) {
                printLine(QStringLiteral("[HotKeyManager] ERROR: RegisterEventHotKey failed with status %1")
                              .arg(status));
            }
        });
}

void HotKeyManager::setTrigger(const QString& trigger) {
    if (m_trigger != trigger) {
        m_trigger = trigger;
        Q_EMIT triggerChanged(trigger);
    }
}

} // namespace corvatto
