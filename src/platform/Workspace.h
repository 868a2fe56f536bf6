// The desktop around us, which opens addresses.
#pragma once

#include <QUrl>

namespace corvatto {

class Workspace {
public:
    Workspace() = default;
    virtual ~Workspace() = default;
    Workspace(const Workspace&) = delete;
    Workspace& operator=(const Workspace&) = delete;

    // Hands `url` to the application that the user has chosen for its kind, without waiting for it. False
    // when none could be started.
    virtual bool openURL(const QUrl& url) = 0;
};

} // namespace corvatto
