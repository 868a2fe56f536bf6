// The named colours and fonts of the program's windows. They are light whatever the desktop's theme is, so
// that no dark theme turns text white on white; only the accent colour follows the desktop.
#pragma once

#include <QColor>
#include <QFont>
#include <QPalette>

namespace corvatto::appearance {

QColor accentColor();
QColor purple();
QColor orange();
QColor gray();
QColor labelColor();          // Color.primary
QColor secondaryLabelColor(); // Color.secondary
QColor tertiaryLabelColor();
QColor systemRed();
QColor controlBackgroundColor();
QColor separatorColor();
QColor panelBackground(); // grey 229

// `color` with its opacity multiplied by `opacity`, 0 to 1.
QColor faded(QColor color, double opacity);

// The system font, and the system's fixed-width font, at a size in points (device-independent pixels).
QFont systemFont(double size, QFont::Weight weight = QFont::Normal);
QFont monospacedSystemFont(double size, QFont::Weight weight = QFont::Normal);

// A font of the desktop's as the interface uses it: in that size and weight whatever style the desktop names,
// and with Chinese characters in their simplified forms whatever the locale. These come from the font that
// the user's font configuration prefers for `genericFamily`, "sans-serif" or "monospace".
QFont interfaceFont(QFont font, const QString& genericFamily, double size, QFont::Weight weight);

constexpr double bodySize = 13;
constexpr double captionSize = 10;

// A complete light palette from the colours above.
QPalette lightPalette();

} // namespace corvatto::appearance
