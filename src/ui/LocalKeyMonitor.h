// Sees the key presses addressed to this application's own windows before the windows do, and may swallow
// them.
#pragma once

#include "platform/KeyEvent.h"

#include <QObject>

#include <functional>

namespace corvatto {

// Lasts as long as the object. Key presses that an input method has taken, and those that belong to an open
// menu, never arrive here. Main thread.
class LocalKeyMonitor : public QObject {
public:
    // The handler returns true to swallow the event and false to let it pass on unchanged.
    using Handler = std::function<bool(const KeyEvent&)>;

    explicit LocalKeyMonitor(Handler handler);

    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    Handler m_handler;
};

} // namespace corvatto
