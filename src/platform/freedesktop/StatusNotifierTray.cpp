#include "platform/freedesktop/StatusNotifierTray.h"

#include <utility>

namespace corvatto {

StatusNotifierTray::StatusNotifierTray() {
    // While whoever should know does not answer, Qt's icon would wait for the answer on the main thread.
    connect(&m_host, &StatusNotifierHost::answered, this, [this](StatusNotifierHost::Status status) {
        if (status == StatusNotifierHost::Status::Present && !std::exchange(m_isAvailable, true)) {
            Q_EMIT available();
        }
    });
}

void StatusNotifierTray::startWatching() {
    m_host.startWatching();
}

bool StatusNotifierTray::openMenu(QMenu& /*menu*/) {
    return false;
}

} // namespace corvatto
