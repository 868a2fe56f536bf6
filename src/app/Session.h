// The program's session on a display: what the platform's interfaces are implemented by, and the event loop,
// which ends with the display.
#pragma once

#include "app/Platform.h"

#include <QString>

namespace corvatto {

// Main thread. One at a time, while there is an application object.
class Session {
public:
    Session() = default;
    virtual ~Session() = default;
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    // Lives as long as the session.
    virtual Platform platform() = 0;

    // Runs the event loop, and returns the exit status of the program. When the display is lost, prints a
    // line; the status is then EXIT_FAILURE, unless Qt ends the process with it right there.
    static int runEventLoop();

    // Ends the event loop with EXIT_FAILURE and the line that says what is gone.
    static void displayLost(const QString& line);
};

} // namespace corvatto
