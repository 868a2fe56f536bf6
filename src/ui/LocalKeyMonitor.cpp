#include "ui/LocalKeyMonitor.h"

#include <QApplication>
#include <QKeyEvent>

namespace corvatto {

LocalKeyMonitor::LocalKeyMonitor(Handler handler) : m_handler(std::move(handler)) {
    qApp->installEventFilter(this);
}

bool LocalKeyMonitor::eventFilter(QObject* watched, QEvent* event) {
    // Qt sends a key press to the window, then to the focus widget, then to its parents, and calls this
    // filter each time. Only the first, to the window, is handled.
    if (event->type() != QEvent::KeyPress || !watched->isWindowType()) {
        return false;
    }
    if (QApplication::activePopupWidget() != nullptr) {
        return false;
    }
    return m_handler(keyEventFrom(static_cast<const QKeyEvent&>(*event)));
}

} // namespace corvatto
