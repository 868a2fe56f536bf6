// A desktop whose alerts the test answers, and that keeps the addresses it is asked to open.
#pragma once

#include "platform/Alerts.h"
#include "platform/Workspace.h"

#include <QList>

#include <functional>

namespace corvatto::test {

class FakeDesktop : public Alerts, public Workspace {
public:
    int answer = 0; // the index of the button that is chosen
    QList<Alert> shown;
    std::function<void()> whileShown; // what goes on in the nested event loop of the next alert
    QList<QUrl> opened;

    int runModal(const Alert& alert) override {
        shown << alert;
        if (const auto meanwhile = std::exchange(whileShown, nullptr)) {
            meanwhile();
        }
        return answer;
    }
    bool openURL(const QUrl& url) override {
        opened << url;
        return true;
    }
};

} // namespace corvatto::test
