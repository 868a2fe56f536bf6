// The desktop around us: which application is in front.
#pragma once

#include <QString>

namespace corvatto {

class Workspace {
public:
    Workspace() = default;
    virtual ~Workspace() = default;
    Workspace(const Workspace&) = delete;
    Workspace& operator=(const Workspace&) = delete;

    // The display name, in the user's language, of the application in front; empty when there is none or it
    // has no name. Asks the display server, never the application.
    virtual QString frontmostApplicationName() = 0;
};

} // namespace corvatto
