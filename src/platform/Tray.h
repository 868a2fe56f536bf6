// The desktop's tray, where programs keep their status items.
#pragma once

#include <QObject>

namespace corvatto {

class Tray : public QObject {
    Q_OBJECT

public:
    // Looks for a tray, and goes on looking while there is none.
    virtual void find() = 0;

Q_SIGNALS:
    // There is one, and QSystemTrayIcon takes the right kind from now on. Once, from the event loop.
    void found();
};

} // namespace corvatto
