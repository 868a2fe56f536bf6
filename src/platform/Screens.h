// The screens and the mouse. Points, with the origin at the top left of the desktop and y growing downwards.
#pragma once

#include <QPoint>
#include <QRect>

#include <functional>
#include <optional>
#include <vector>

namespace corvatto {

struct Screen {
    QRect frame;        // all of the screen
    QRect visibleFrame; // what panels and docks leave free
};

class Screens {
public:
    Screens() = default;
    virtual ~Screens() = default;
    Screens(const Screens&) = delete;
    Screens& operator=(const Screens&) = delete;

    // Called from the event loop when a screen was added, removed or changed, or its visible frame was.
    std::function<void()> didChange;

    virtual QPoint mouseLocation() const = 0;
    virtual std::vector<Screen> screens() const = 0;
    virtual std::optional<Screen> mainScreen() const = 0;
};

} // namespace corvatto
