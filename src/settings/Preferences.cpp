#include "settings/Preferences.h"

#include "settings/SettingsKeys.h"

namespace corvatto {

Preferences::Preferences(const UserDefaults& defaults)
    : m_maxItemCount(defaults, SettingsKeys::maxItemCount, SettingsKeys::defaultMaxItemCount),
      m_maxRetentionDays(defaults, SettingsKeys::maxRetentionDays, SettingsKeys::defaultMaxRetentionDays) {}

qint64 Preferences::maxItemCount() const {
    return m_maxItemCount.wrappedValue();
}

qint64 Preferences::maxRetentionDays() const {
    return m_maxRetentionDays.wrappedValue();
}

} // namespace corvatto
