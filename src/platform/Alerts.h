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
    QStringList buttons; // in order; the first is the default
    // The index of the button that closing the alert counts as, with Escape or otherwise. Negative: the last.
    int buttonOnClosing = -1;
};

class Alerts {
public:
    Alerts() = default;
    virtual ~Alerts() = default;
    Alerts(const Alerts&) = delete;
    Alerts& operator=(const Alerts&) = delete;

    // Shows the alert above all windows and returns the index of the chosen button. Runs a nested event loop,
    // so the rest of the program goes on.
    virtual int runModal(const Alert& alert) = 0;
};

} // namespace corvatto
