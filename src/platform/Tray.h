// The desktop's tray, where programs keep their status items.
#pragma once

#include <QObject>

class QMenu;

namespace corvatto {

// Main thread.
class Tray : public QObject {
    Q_OBJECT

public:
    // Starts looking for a tray, and waits for one as long as there is none.
    virtual void startWatching() = 0;

    // Opens the menu of the icon that the user has just clicked, at the icon. False where only the tray
    // itself can do that; it does at a click with the secondary button.
    virtual bool openMenu(QMenu& menu) = 0;

Q_SIGNALS:
    // There is a tray, and QSystemTrayIcon will choose the right kind. Emitted once, from the event loop.
    void available();
};

} // namespace corvatto
