#include "platform/dbus/HeldKey.h"

namespace corvatto {

HeldKey::HeldKey(std::chrono::milliseconds longestPause) : m_longestPause(longestPause) {}

bool HeldKey::press() {
    const bool isRepeat = m_lastPress.isValid() && m_lastPress.elapsed() < m_longestPause.count();
    m_lastPress.start();
    return !isRepeat;
}

void HeldKey::release() {
    m_lastPress.invalidate();
}

} // namespace corvatto
