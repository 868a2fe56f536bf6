// The interval at which the clipboard is polled.
#pragma once

namespace corvatto {

class UserDefaults;

// As it is applied, in seconds: the stored one, brought between 0.1 and 5; the default for 0, for less, and
// for what is no number.
double pollingInterval(const UserDefaults& defaults);

} // namespace corvatto
