// Starts the program's session on the best display system that works here, and falls back to the next one.
#pragma once

#include "app/DisplayChoice.h"
#include "app/Session.h"

#include <QApplication>

#include <memory>

namespace corvatto {

struct StartedSession {
    std::unique_ptr<QApplication> application; // outlives the session
    std::unique_ptr<Session> session;          // null when there is no display, after a printed line
    DisplaySystem displaySystem{};
};

// $CORVATTO_PLATFORM names the best way that is tried: "wayland", "wayland-clipboard" or "x11". Prints a line
// that says which way was taken. Keeps references to both arguments.
StartedSession startSession(int& argc, char** argv);

} // namespace corvatto
