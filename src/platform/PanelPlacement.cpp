#include "platform/PanelPlacement.h"

#include <algorithm>
#include <cmath>

namespace corvatto {
namespace {

constexpr double heightShare = 0.42;  // of the visible frame's
constexpr double maximumHeight = 440; // points

template <typename Predicate>
std::optional<Screen> firstWhere(const std::vector<Screen>& screens, Predicate predicate) {
    const auto found = std::find_if(screens.begin(), screens.end(), predicate);
    return found != screens.end() ? std::optional(*found) : std::nullopt;
}

} // namespace

QRect panelFrame(const QRect& visibleFrame) {
    QRect frame = visibleFrame;
    const auto height = std::lround(std::min(visibleFrame.height() * heightShare, maximumHeight));
    frame.setTop(visibleFrame.top() + visibleFrame.height() - static_cast<int>(height));
    return frame;
}

std::optional<Screen> screenForPanel(const Screens& screens) {
    const std::vector<Screen> all = screens.screens();
    const QPoint mouse = screens.mouseLocation();
    if (const auto under = firstWhere(all, [&](const Screen& each) { return each.frame.contains(mouse); })) {
        return under;
    }
    if (const auto main = screens.mainScreen()) {
        return main;
    }
    return all.empty() ? std::nullopt : std::optional(all.front());
}

std::optional<Screen> screenForPanel(const Screens& screens, const QPoint& origin) {
    const auto same =
        firstWhere(screens.screens(), [&](const Screen& each) { return each.frame.topLeft() == origin; });
    return same ? same : screenForPanel(screens);
}

} // namespace corvatto
