// A desktop on a private KWin without a screen, whose picture is drawn in memory. It needs the session bus:
// KWin serves pictures and global shortcuts over it.
#pragma once

#include "WaylandDesktop.h"

#include <QDBusConnection>

namespace corvatto::test {

class PlasmaWindows;

class KWinDesktop : public WaylandDesktop {
public:
    // Returns when KWin is in charge. Where it does not run, has the current test skipped, and is of no use.
    explicit KWinDesktop(const Options& options);
    ~KWinDesktop() override;

    QImage picture(QRect area) override;
    bool panelHasKeyboard(qint64 pid) override;
    Window windowInFront(qint64 panelsPid) override;
    QList<QByteArray> targets() override;
    void minimizeWindowInFront();

private:
    QDBusConnection m_bus;
    std::unique_ptr<Process> m_taskBar;
    std::unique_ptr<PlasmaWindows> m_windows;
};

} // namespace corvatto::test
