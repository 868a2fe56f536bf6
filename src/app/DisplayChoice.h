// Decides how the program runs on the display systems that it finds.
#pragma once

#include <QString>

#include <functional>
#include <optional>

namespace corvatto {

// The best one first.
enum class DisplaySystem {
    wayland,          // all by Wayland's protocols
    waylandClipboard, // the clipboard by Wayland's protocols, the windows through XWayland
    xwayland,         // all through the X server that a Wayland compositor runs
    x11,
};

// What there is. What costs something to find out, such as an X server that starts when it is first asked,
// is found out when it matters.
struct DisplayFacts {
    bool hasCompositor = false;
    bool controlsClipboard = false; // the compositor lets us read and write the clipboard without the focus
    bool hasLayers = false;         // and place a window along an edge of the screen
    bool hasWaylandPlugin = false;  // Qt can talk to it
    std::function<bool()> reachesXServer;
};

// The first way that works, in the order of the enumeration and from `best` on. Absent when none does.
std::optional<DisplaySystem> chooseDisplaySystem(const DisplayFacts& facts,
                                                 DisplaySystem best = DisplaySystem::wayland);

// The way that a user names as "wayland", "wayland-clipboard" or "x11"; absent for anything else.
std::optional<DisplaySystem> displaySystemNamed(const QString& name);

// One sentence for people.
QString description(DisplaySystem system);

} // namespace corvatto
