#include "WaylandDesktop.h"

namespace corvatto::test {

void WaylandDesktop::plugIn(const QByteArray& compositor) {
    setVariable("WAYLAND_DISPLAY", compositor);
    // Qt never lets go of what it binds of a compositor, nor of its clipboard; our own leaks show in unit
    // tests.
    setVariable("ASAN_OPTIONS",
                environment().value(QStringLiteral("ASAN_OPTIONS")).toUtf8() + ":detect_leaks=0");
    m_input = std::make_unique<WaylandInput>(home() + "/runtime/" + compositor, m_screen);
}

// Compositors tell of windows only. The panel is none, and is known by its colour, which lines one pixel high
// divide.
QRect WaylandDesktop::panel(qint64) {
    constexpr QRgb colour = qRgb(229, 229, 229);
    constexpr int margin = 1; // of the panel, which nothing is drawn in
    const QImage column = picture({margin, 0, 1, m_screen.height()});
    const auto isPanelAt = [&](int y) {
        return y >= 0 && column.pixel(0, y) == colour;
    };
    int bottom = column.height() - 1;
    while (bottom >= 0 && !isPanelAt(bottom)) {
        --bottom;
    }
    int top = bottom;
    while (isPanelAt(top - 1) || isPanelAt(top - 2)) {
        --top;
    }
    if (bottom - top < 300) { // something else
        return {};
    }
    const QImage row = picture({0, bottom - margin, m_screen.width(), 1});
    int right = margin;
    while (right + 1 < row.width() && row.pixel(right + 1, 0) == colour) {
        ++right;
    }
    constexpr int border = 1; // of another colour
    return {QPoint(0, top - border), QPoint(right, bottom)};
}

std::optional<QByteArray> WaylandDesktop::paste(const QByteArray& target) {
    return outputOf("wl-paste", {"--no-newline", "--type", target});
}

QList<QByteArray> WaylandDesktop::targets() {
    return outputOf("wl-paste", {"--list-types"}).value_or("").split('\n');
}

} // namespace corvatto::test
