// Where the history panel goes, on display systems that let a program place its windows.
#pragma once

#include "platform/Screens.h"

namespace corvatto {

// The panel's frame on a screen: the full width of what is free of the screen, along its bottom.
QRect panelFrame(const QRect& visibleFrame);

// The screen on which to show the panel: the one under the mouse, else the main one, else the first. Absent
// when there are no screens.
std::optional<Screen> screenForPanel(const Screens& screens);

// The screen for a panel that is visible when the screens change: the one at `origin`, the top left of the
// screen that the panel was on, or a new choice when there is none any more.
std::optional<Screen> screenForPanel(const Screens& screens, const QPoint& origin);

} // namespace corvatto
