// What the About panel says.
#pragma once

#include "platform/Alerts.h"

namespace corvatto {

Alert aboutAlert(const QString& version);

} // namespace corvatto
