// The desktop around us: which application is in front, and which opens an address.
#pragma once

#include <QString>
#include <QUrl>

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

    // Hands `url` to the application that the user has chosen for its kind, without waiting for it. False
    // when none could be started.
    virtual bool openURL(const QUrl& url) = 0;
};

} // namespace corvatto
