// Modal alerts in windows of their own.
#pragma once

#include "platform/Alerts.h"

namespace corvatto {

class QtAlerts : public Alerts {
public:
    int runModal(const Alert& alert) override;
};

} // namespace corvatto
