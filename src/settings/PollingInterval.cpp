#include "settings/PollingInterval.h"

#include "platform/UserDefaults.h"
#include "settings/SettingsKeys.h"

#include <algorithm>

namespace corvatto {

double pollingInterval(const UserDefaults& defaults) {
    constexpr double shortest = 0.1; // seconds
    constexpr double longest = 5.0;  // seconds
    const double stored = defaults.number(SettingsKeys::clipboardPollingInterval);
    return stored <= 0 ? SettingsKeys::defaultClipboardPollingInterval
                       : std::clamp(stored, shortest, longest);
}

} // namespace corvatto
