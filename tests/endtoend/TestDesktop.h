// A desktop of a test's own: a private X server, a window manager with two desktops, and a home directory.
// All of it ends with the object, and nothing of the user's own desktop is read or touched.
#pragma once

#include "Process.h"

#include <QSize>
#include <QTemporaryDir>

#include <csignal>
#include <memory>

namespace corvatto::test {

class TestDesktop {
public:
    struct Options {
        QSize screen = {1280, 1100}; // pixels
        int bottomMargin = 0;        // pixels kept free at the bottom, as for a task bar
        bool hasSessionBus = false;
    };

    // Returns when the window manager is in charge. Throws std::runtime_error when that does not come about.
    explicit TestDesktop(const Options& options);

    const QByteArray& display() const { return m_display; }
    const QByteArray& sessionBus() const { return m_sessionBus; }            // its address
    const QProcessEnvironment& environment() const { return m_environment; } // for programs on this desktop

    // Absolute paths, below the private home.
    QByteArray home() const { return m_home.path().toUtf8(); }
    QByteArray dataDirectory() const { return home() + "/data/Corvatto"; }
    QByteArray settingsFile() const { return home() + "/config/corvatto/corvatto.ini"; }
    // Writes a file below the home, directories included, and returns its path.
    QByteArray writeFile(const QByteArray& name, const QByteArray& bytes) const;

    // A window manager that is suspended takes notice of nothing until it is resumed.
    void suspendWindowManager() const { kill(static_cast<pid_t>(m_windowManager->pid()), SIGSTOP); }
    void resumeWindowManager() const { kill(static_cast<pid_t>(m_windowManager->pid()), SIGCONT); }
    // Starts one, ending the one that runs. Returns when it is in charge.
    void startWindowManager();
    void stopWindowManager() { m_windowManager.reset(); }
    void stopServer() { m_server.reset(); } // and with it everything on the screen

private:
    QTemporaryDir m_home;
    QProcessEnvironment m_environment;
    QByteArray m_display, m_sessionBus, m_windowManagerSettings;
    std::unique_ptr<Process> m_server, m_windowManager, m_bus;
};

} // namespace corvatto::test
