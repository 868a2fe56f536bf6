#include "settings/LaunchDefaults.h"

#include "platform/UserDefaults.h"
#include "settings/SettingsKeys.h"

namespace corvatto {

void registerLaunchDefaults(UserDefaults& defaults) {
    defaults.registerDefaults({
        {SettingsKeys::clipboardPollingInterval, SettingsKeys::defaultClipboardPollingInterval},
        {SettingsKeys::corvattoHistoryWindowOpenCount, 0},
        {SettingsKeys::corvattoLastUpdateCheckAt, 0},
    });
}

} // namespace corvatto
