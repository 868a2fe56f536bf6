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

constexpr double bodySize = 13;
constexpr double captionSize = 10;

// A complete light palette from the colours above.
QPalette lightPalette();

} // namespace corvatto::appearance
