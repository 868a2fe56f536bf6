#include "X11Desktop.h"

#include <stdexcept>

namespace corvatto::test {

namespace {

constexpr auto windowManagerSettings = R"(<?xml version="1.0" encoding="UTF-8"?>
<openbox_config xmlns="http://openbox.org/3.4/rc">
  <focus><focusNew>yes</focusNew><followMouse>no</followMouse></focus>
  <desktops><number>2</number><popupTime>0</popupTime></desktops>
  <margins><top>0</top><bottom>BOTTOM</bottom><left>0</left><right>0</right></margins>
  <keyboard/>
  <mouse><context name="Client"><mousebind button="Left" action="Press"><action name="Focus"/>
    <action name="Raise"/></mousebind></context></mouse>
</openbox_config>
)";

} // namespace

X11Desktop::X11Desktop(const Options& options) : TestDesktop(options) {
    // The server chooses a free display and writes its number, so that several tests can run at once.
    const QByteArray screen = QByteArray::number(options.screen.width()) + 'x' +
                              QByteArray::number(options.screen.height()) + "x24";
    m_server = std::make_unique<Process>(
        "Xvfb", QByteArrayList{"-displayfd", "1", "-screen", "0", screen, "-nolisten", "tcp", "-noreset"},
        environment(), true);
    if (!soon([this] { return m_server->output().endsWith('\n') || !m_server->isRunning(); })) {
        throw std::runtime_error("the X server names no display");
    }
    m_display = ':' + m_server->output().trimmed();
    setVariable("DISPLAY", m_display);
    m_client = std::make_unique<XClient>(m_display);
    m_windowManagerSettings = writeFile(
        "openbox.xml",
        QByteArray(windowManagerSettings).replace("BOTTOM", QByteArray::number(options.bottomMargin)));
    startWindowManager();
}

void X11Desktop::startWindowManager() {
    m_windowManager.reset();
    m_windowManager = std::make_unique<Process>(
        "openbox",
        QByteArrayList{"--sm-disable", "--config-file", m_windowManagerSettings, "--startup", "echo ready"},
        environment(), true);
    if (!soon([this] { return m_windowManager->output() == "ready\n"; })) {
        throw std::runtime_error("no window manager");
    }
}

XClient::Window X11Desktop::panelWindow(qint64 pid) {
    for (const auto window : m_client->visibleWindows(pid)) {
        if (m_client->title(window) == "Corvatto" &&
            m_client->geometry(window).height() > 300) { // alerts are lower
            return window;
        }
    }
    return XCB_NONE;
}

QRect X11Desktop::panel(qint64 pid) {
    const auto window = panelWindow(pid);
    return window == XCB_NONE ? QRect() : m_client->geometry(window);
}

bool X11Desktop::panelHasKeyboard(qint64 pid) {
    const auto window = panelWindow(pid);
    return window != XCB_NONE && m_client->activeWindow() == window;
}

TestDesktop::Window X11Desktop::windowInFront(qint64 panelsPid) {
    const auto window = m_client->activeWindow();
    if (window == XCB_NONE || window == panelWindow(panelsPid)) {
        return {};
    }
    return {m_client->windowClass(window), m_client->title(window), m_client->geometry(window)};
}

std::optional<QByteArray> X11Desktop::paste(const QByteArray& target) {
    return outputOf("xclip", {"-out", "-selection", "clipboard", "-target", target});
}

QList<QByteArray> X11Desktop::targets() {
    return paste("TARGETS").value_or("").split('\n');
}

} // namespace corvatto::test
