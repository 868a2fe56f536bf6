// The stored global shortcut, and what its readers take it for.
#pragma once

#include <QtGlobal>

namespace corvatto {

class UserDefaults;

struct Shortcut {
    qint64 keyCode;   // a virtual key code
    qint64 modifiers; // a mask of HotKeyModifier
    bool operator==(const Shortcut&) const = default;
};

// Main thread.

// As it is stored, with 0 for what is absent or no number. To be compared to notice a change of the setting.
Shortcut storedShortcut(const UserDefaults& defaults);

// What the preferences show: as stored, a 0 included, or the default for what is absent or no number.
Shortcut shownShortcut(const UserDefaults& defaults);

// What is registered: the default for 0 as well, and for what does not fit in 32 bits unsigned, because the
// default serves better than no shortcut.
Shortcut registeredShortcut(const UserDefaults& defaults);

} // namespace corvatto
