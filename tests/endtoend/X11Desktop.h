// A desktop on a private X server, with a window manager that has two desktops.
#pragma once

#include "TestDesktop.h"
#include "XClient.h"

#include <csignal>

namespace corvatto::test {

class X11Desktop : public TestDesktop {
public:
    // Returns when the window manager is in charge. Throws std::runtime_error when that does not come about.
    explicit X11Desktop(const Options& options);

    const QByteArray& display() const { return m_display; }
    XClient& client() { return *m_client; }  // the test's own connection
    XClient::Window panelWindow(qint64 pid); // 0 while it is hidden

    void key(const QByteArray& keys) override { m_client->key(keys); }
    void type(const QByteArray& text) override { m_client->type(text); }
    void click(QPoint position, int times, int button) override { m_client->click(position, times, button); }
    QImage picture(QRect area) override { return m_client->picture(area); }
    QRect panel(qint64 pid) override;
    bool panelHasKeyboard(qint64 pid) override;
    Window windowInFront(qint64 panelsPid) override;
    QByteArray textTarget() const override { return "UTF8_STRING"; }
    std::optional<QByteArray> paste(const QByteArray& target) override;
    QList<QByteArray> targets() override;

    // A window manager that is suspended takes notice of nothing until it is resumed.
    void suspendWindowManager() const { kill(static_cast<pid_t>(m_windowManager->pid()), SIGSTOP); }
    void resumeWindowManager() const { kill(static_cast<pid_t>(m_windowManager->pid()), SIGCONT); }
    // Starts one, ending the one that runs. Returns when it is in charge.
    void startWindowManager();
    void stopWindowManager() { m_windowManager.reset(); }
    void stopServer() override { m_server.reset(); }

private:
    QByteArray m_display, m_windowManagerSettings;
    std::unique_ptr<Process> m_server, m_windowManager;
    std::unique_ptr<XClient> m_client;
};

} // namespace corvatto::test
