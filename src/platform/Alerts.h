// Modal alerts.
#pragma once

#include <QString>
#include <QStringList>

namespace corvatto {

struct Alert {
    enum class Style { Informational, Warning };

    QString messageText;
    QString informativeText;
    Style style = Style::Informational;
    QStringList buttons; // in order; the first is the default, the last answers Escape when there are several
};

class Alerts {
public:
    Alerts() = default;
    virtual ~Alerts() = default;
    Alerts(const Alerts&) = delete;
    Alerts& operator=(const Alerts&) = delete;

    // Shows the alert in front of everything and returns the index of the button chosen; closing the alert
    // without one counts as its last button. Runs a nested event loop, so the rest of the program goes on.
    virtual int runModal(const Alert& alert) = 0;
};

} // namespace corvatto
