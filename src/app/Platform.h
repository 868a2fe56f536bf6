// The implementations of the platform's interfaces for the display system that the program runs on. Each
// display system has one factory that fills this in; nothing else names implementations.
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
