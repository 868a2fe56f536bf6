// Every key that the program keeps in the user's settings. Keys are flat and are never deleted. Other code
// uses these names instead of spelling a key out.
#pragma once

#include <QString>

namespace corvatto::SettingsKeys {

// The interval at which the clipboard is polled, in seconds, a double. 0.5 by a registered default; applied
// between 0.1 and 5.
inline const QString clipboardPollingInterval = QStringLiteral("clipboardPollingInterval");

// The most entries that are kept, an integer. 0, the default, and anything below keep all.
inline const QString maxItemCount = QStringLiteral("maxItemCount");

// The days that an entry is kept after its last copy, an integer. 0, the default, and anything below keep for
// ever.
inline const QString maxRetentionDays = QStringLiteral("maxRetentionDays");

// The key of the global shortcut, a virtual key code: a position on the keyboard, not a letter. Readers take
// 0 for unset, although it is a key as well (A), and use defaultHotkeyKeyCode.
inline const QString hotkeyKeyCode = QStringLiteral("hotkeyKeyCode");

// The modifiers of the global shortcut: the sum of command 256, shift 512, option 2048 and control 4096.
// Readers take 0 for unset and use defaultHotkeyModifiers.
inline const QString hotkeyModifiers = QStringLiteral("hotkeyModifiers");

// How often the history window has been opened, ever, an integer. 0 by a registered default.
inline const QString corvattoHistoryWindowOpenCount = QStringLiteral("corvattoHistoryWindowOpenCount");

// When an update check last succeeded, in seconds since 1970-01-01 00:00 UTC, a double. 0 by a registered
// default.
inline const QString corvattoLastUpdateCheckAt = QStringLiteral("corvattoLastUpdateCheckAt");

// The version that the user chose to skip, a text. No default.
inline const QString corvattoIgnoredUpdateVersion = QStringLiteral("corvattoIgnoredUpdateVersion");

// The values of absent keys. Only three of them are registered at launch (LaunchDefaults.h); for the others,
// each reader falls back on these.
inline constexpr double defaultClipboardPollingInterval = 0.5; // seconds
inline constexpr qint64 defaultMaxItemCount = 0;
inline constexpr qint64 defaultMaxRetentionDays = 0;
inline constexpr qint64 defaultHotkeyKeyCode = 9;     // the V key
inline constexpr qint64 defaultHotkeyModifiers = 768; // command 256 and shift 512

} // namespace corvatto::SettingsKeys
