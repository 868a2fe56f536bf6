#include "hotkey/ShortcutRecorder.h"

#include "settings/SettingsKeys.h"
#include "settings/UserDefault.h"

namespace corvatto {

ShortcutRecorder::ShortcutRecorder(UserDefaults& defaults) : m_defaults(defaults) {
    onShortcutChanged = [this](qint64 keyCode, qint64 modifiers) {
        m_defaults.setInteger(SettingsKeys::hotkeyKeyCode, keyCode);
        m_defaults.setInteger(SettingsKeys::hotkeyModifiers, modifiers);
    };
    connect(&m_defaults, &UserDefaults::didChange, this, &ShortcutRecorder::showStored);
    showStored();
}

void ShortcutRecorder::showStored() {
    using namespace SettingsKeys;
    setShortcut(UserDefault<qint64>(m_defaults, hotkeyKeyCode, defaultHotkeyKeyCode).wrappedValue(),
                UserDefault<qint64>(m_defaults, hotkeyModifiers, defaultHotkeyModifiers).wrappedValue());
}

} // namespace corvatto
