// The program's permanent handle: a paper clip in the desktop's tray, with a menu.
#pragma once

#include <QIcon>
#include <QMenu>
#include <QSystemTrayIcon>

#include <functional>

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

    explicit StatusItem(Actions actions);

private:
    Actions m_actions;
    QMenu m_menu;
    QSystemTrayIcon m_icon;
};

// The paper clip, dark with a light edge, so that it can be read on light and on dark panels.
QIcon paperclipIcon();

} // namespace corvatto
