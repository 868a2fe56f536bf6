// A desktop on a private sway without a screen, whose picture is drawn in memory.
#pragma once

#include "WaylandDesktop.h"

#include <QJsonDocument>
#include <QJsonObject>

namespace corvatto::test {

class SwayDesktop : public WaylandDesktop {
public:
    // Returns when sway is in charge. Throws std::runtime_error when that does not come about.
    explicit SwayDesktop(const Options& options);

    QImage picture(QRect area) override;
    bool panelHasKeyboard(qint64 pid) override;
    Window windowInFront(qint64 panelsPid) override;

private:
    QJsonDocument ask(const QByteArray& question) const;
};

} // namespace corvatto::test
