// What the workspaces of Linux desktops share, whatever their display system: names of applications, and the
// desktop's opener of addresses.
#pragma once

#include "platform/Workspace.h"
#include "platform/freedesktop/DesktopEntries.h"

namespace corvatto {

// Main thread.
class FreedesktopWorkspace : public Workspace {
public:
    FreedesktopWorkspace();

    // Through the desktop's own opener (xdg-open, where there is one).
    bool openURL(const QUrl& url) override;

protected:
    // The name that users know an application by, from what its windows say of it, the surest first: the
    // localized name in the first desktop entry that belongs to one of `identifiers`, else the last of them
    // itself. May read desktop entries.
    QString applicationName(const QStringList& identifiers);

private:
    DesktopEntries m_entries;
};

} // namespace corvatto
