// Modal alerts as message boxes.
#pragma once

#include "platform/Alerts.h"

namespace corvatto {

class QtAlerts : public Alerts {
public:
    int runModal(const Alert& alert) override;
};

} // namespace corvatto
