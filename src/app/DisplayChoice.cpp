#include "app/DisplayChoice.h"

#include <array>
#include <utility>

namespace corvatto {
namespace {

bool works(DisplaySystem system, const DisplayFacts& facts) {
    switch (system) {
    case DisplaySystem::wayland:
        return facts.hasCompositor && facts.controlsClipboard && facts.hasLayers && facts.hasWaylandPlugin;
    case DisplaySystem::waylandClipboard:
        return facts.hasCompositor && facts.controlsClipboard && facts.reachesXServer();
    case DisplaySystem::xwayland:
        return facts.hasCompositor && facts.reachesXServer();
    case DisplaySystem::x11:
        return !facts.hasCompositor && facts.reachesXServer();
    }
    return false;
}

} // namespace

std::optional<DisplaySystem> chooseDisplaySystem(const DisplayFacts& facts, DisplaySystem best) {
    for (const auto system : {DisplaySystem::wayland, DisplaySystem::waylandClipboard,
                              DisplaySystem::xwayland, DisplaySystem::x11}) {
        if (system >= best && works(system, facts)) {
            return system;
        }
    }
    return std::nullopt;
}

std::optional<DisplaySystem> displaySystemNamed(const QString& name) {
    const std::array names{std::pair(QLatin1String("wayland"), DisplaySystem::wayland),
                           std::pair(QLatin1String("wayland-clipboard"), DisplaySystem::waylandClipboard),
                           // In a Wayland session the X server is XWayland.
                           std::pair(QLatin1String("x11"), DisplaySystem::xwayland)};
    for (const auto& [each, system] : names) {
        if (name == each) {
            return system;
        }
    }
    return std::nullopt;
}

QString description(DisplaySystem system) {
    switch (system) {
    case DisplaySystem::wayland:
        return QStringLiteral("Wayland session: native.");
    case DisplaySystem::waylandClipboard:
        return QStringLiteral("Wayland session: native clipboard, windows through XWayland.");
    case DisplaySystem::xwayland:
        return QStringLiteral("Wayland session: running through XWayland.");
    case DisplaySystem::x11:
        return QStringLiteral("X11 session.");
    }
    return {};
}

} // namespace corvatto
