#include "ui/LocalKeyMonitor.h"

#include <QApplication>
#include <QKeyEvent>

namespace corvatto {

LocalKeyMonitor::LocalKeyMonitor(Handler handler) : m_handler(std::move(handler)) {
    qApp->installEventFilter(this);
}

bool LocalKeyMonitor::eventFilter(QObject* watched, QEvent* event) {
    // A key press travels from the window to the focus widget and up through its parents, and the
    // application's filter sees it at each station. The window comes first and counts.
    if (event->type() != QEvent::KeyPress || !watched->isWindowType()) {
        return false;
    }
    if (QApplication::activePopupWidget() != nullptr) {
        return false;
    }
    return m_handler(keyEventFrom(static_cast<const QKeyEvent&>(*event)));
}

} // namespace corvatto
