#include "settings/Shortcut.h"

#include "platform/UserDefaults.h"
#include "settings/SettingsKeys.h"

#include <limits>

namespace corvatto {
namespace {

constexpr Shortcut defaultShortcut{SettingsKeys::defaultHotkeyKeyCode, SettingsKeys::defaultHotkeyModifiers};

} // namespace

Shortcut storedShortcut(const UserDefaults& defaults) {
    return {defaults.integer(SettingsKeys::hotkeyKeyCode), defaults.integer(SettingsKeys::hotkeyModifiers)};
}

Shortcut shownShortcut(const UserDefaults& defaults) {
    const auto isNumber = [&defaults](const QString& key) {
        return exactNumber(defaults.object(key)).has_value();
    };
    const Shortcut stored = storedShortcut(defaults);
    return {isNumber(SettingsKeys::hotkeyKeyCode) ? stored.keyCode : defaultShortcut.keyCode,
            isNumber(SettingsKeys::hotkeyModifiers) ? stored.modifiers : defaultShortcut.modifiers};
}

Shortcut registeredShortcut(const UserDefaults& defaults) {
    const auto validOr = [](qint64 value, qint64 fallback) {
        return value > 0 && value <= std::numeric_limits<quint32>::max() ? value : fallback;
    };
    const Shortcut stored = storedShortcut(defaults);
    return {validOr(stored.keyCode, defaultShortcut.keyCode),
            validOr(stored.modifiers, defaultShortcut.modifiers)};
}

} // namespace corvatto
