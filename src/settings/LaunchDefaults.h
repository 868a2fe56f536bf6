// The settings' values that are registered at launch: they answer reads of absent keys and are never written
// to disk.
#pragma once

namespace corvatto {

class UserDefaults;

// Registers the defaults of the polling interval, the opening count and the time of the last update check,
// and no others: the readers of the remaining keys apply their own. To be called before anything reads a
// setting.
void registerLaunchDefaults(UserDefaults& defaults);

} // namespace corvatto
