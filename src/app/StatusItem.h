// The icon in the desktop's tray, a paper clip with a menu. It is there as long as the program runs.
#pragma once

#include "platform/Tray.h"

#include <QMenu>
#include <QSystemTrayIcon>

#include <functional>
#include <optional>

namespace corvatto {

// Appears as soon as there is a tray, and again when the tray restarts. Main thread.
class StatusItem {
public:
    // What the menu's entries do.
    struct Actions {
        std::function<void()> showHistory;
        std::function<void()> clearAll;
        std::function<void()> openPreferences;
        std::function<void()> showAbout;
        std::function<void()> quit;
    };

    // `tray` must outlive the item.
    StatusItem(Tray& tray, Actions actions);

private:
    void show();

    Tray& m_tray;
    Actions m_actions;
    QMenu m_menu;
    std::optional<QSystemTrayIcon> m_icon; // absent until there has been a tray
};

} // namespace corvatto
