#include "hotkey/ShortcutRecorder.h"

#include "settings/SettingsKeys.h"
#include "settings/Shortcut.h"

namespace corvatto {

ShortcutRecorder::ShortcutRecorder(UserDefaults& defaults) : m_defaults(defaults) {
    onShortcutChanged = [this](qint64 keyCode, qint64 modifiers) {
        const Shortcut before = storedShortcut(m_defaults);
        m_defaults.setInteger(SettingsKeys::hotkeyKeyCode, keyCode);
        m_defaults.setInteger(SettingsKeys::hotkeyModifiers, modifiers);
        if (storedShortcut(m_defaults) == before) {
            Q_EMIT recordedSame();
        }
    };
    connect(&m_defaults, &UserDefaults::didChange, this, &ShortcutRecorder::showStored);
    showStored();
}

void ShortcutRecorder::showStored() {
    const Shortcut shortcut = shownShortcut(m_defaults);
    setShortcut(shortcut.keyCode, shortcut.modifiers);
}

} // namespace corvatto
