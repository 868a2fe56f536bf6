// Alerts that the test answers.
#pragma once

#include "platform/Alerts.h"

#include <functional>
#include <vector>

namespace corvatto::test {

class FakeAlerts : public Alerts {
public:
    int answer = 0; // the index of the button that is chosen
    std::vector<Alert> shown;
    std::function<void()> whileShown; // what goes on in the nested event loop of the next alert

    int runModal(const Alert& alert) override {
        shown.push_back(alert);
        if (const auto meanwhile = std::exchange(whileShown, nullptr)) {
            meanwhile();
        }
        return answer;
    }
};

} // namespace corvatto::test
