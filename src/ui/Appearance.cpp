#include "ui/Appearance.h"

#include <QFontDatabase>
#include <QGuiApplication>

namespace corvatto::appearance {
namespace {

// The highlight of Qt's own style, which says that no desktop has set one.
constexpr QRgb unthemedHighlight = 0xFF308CC6;

QFont sized(QFont font, double size, QFont::Weight weight) {
    font.setPixelSize(qRound(size));
    font.setWeight(weight);
    return font;
}

} // namespace

QColor accentColor() {
    const QColor highlight = QGuiApplication::palette().color(QPalette::Active, QPalette::Highlight);
    // The badge writes white on this colour, so a theme's highlight that is nearly white will not do.
    const bool usable =
        highlight.isValid() && highlight.rgba() != unthemedHighlight && highlight.lightness() < 200;
    return usable ? highlight : QColor(0x00, 0x7A, 0xFF);
}

QColor purple() {
    return {0xAF, 0x52, 0xDE};
}

QColor orange() {
    return {0xFF, 0x95, 0x00};
}

QColor gray() {
    return {0x8E, 0x8E, 0x93};
}

QColor labelColor() {
    return QColor(0, 0, 0, 217);
}

QColor secondaryLabelColor() {
    return QColor(0, 0, 0, 128);
}

QColor tertiaryLabelColor() {
    return QColor(0, 0, 0, 66);
}

QColor systemRed() {
    return {0xFF, 0x3B, 0x30};
}

QColor controlBackgroundColor() {
    return Qt::white;
}

QColor separatorColor() {
    return QColor(0, 0, 0, 26);
}

QColor panelBackground() {
    return {229, 229, 229};
}

QColor faded(QColor color, double opacity) {
    color.setAlphaF(static_cast<float>(color.alphaF() * opacity));
    return color;
}

QFont systemFont(double size, QFont::Weight weight) {
    return sized(QFontDatabase::systemFont(QFontDatabase::GeneralFont), size, weight);
}

QFont monospacedSystemFont(double size, QFont::Weight weight) {
    return sized(QFontDatabase::systemFont(QFontDatabase::FixedFont), size, weight);
}

QPalette lightPalette() {
    const QColor text = labelColor();
    QPalette palette(text, QColor(245, 245, 245), Qt::white, QColor(190, 190, 190), QColor(160, 160, 160),
                     text, Qt::white, Qt::white, QColor(245, 245, 245));
    palette.setColor(QPalette::Highlight, accentColor());
    palette.setColor(QPalette::HighlightedText, Qt::white);
    palette.setColor(QPalette::PlaceholderText, faded(secondaryLabelColor(), 0.7));
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText}) {
        palette.setColor(QPalette::Disabled, role, secondaryLabelColor());
    }
    return palette;
}

} // namespace corvatto::appearance
