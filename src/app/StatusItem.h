// The program's permanent handle: a paper clip in the desktop's tray, with a menu.
#pragma once

#include "platform/Tray.h"

#include <QMenu>
#include <QSystemTrayIcon>

#include <functional>
#include <optional>

namespace corvatto {

// Shows up whenever there is a tray, also one that starts later. Main thread.
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

    // The tray outlives the item.
    StatusItem(Tray& tray, Actions actions);

private:
    void show();

    Actions m_actions;
    QMenu m_menu;
    std::optional<QSystemTrayIcon> m_icon; // absent while there has been no tray
};

} // namespace corvatto
