// The platform's classes as implemented for the display system that the program runs on. Whoever fills this
// in, one factory for each display system, is the only one to name implementations.
#pragma once

#include "platform/HotKeyCenter.h"
#include "platform/Pasteboard.h"
#include "platform/Tray.h"
#include "platform/WindowPresenter.h"
#include "platform/Workspace.h"

namespace corvatto {

struct Platform {
    Pasteboard& pasteboard;
    Workspace& workspace;
    HotKeyCenter& hotKeyCenter;
    WindowPresenter& presenter;
    Tray& tray;
};

} // namespace corvatto
