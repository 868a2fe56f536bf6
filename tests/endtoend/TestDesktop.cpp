#include "TestDesktop.h"

#include <QFile>

#include <filesystem>
#include <stdexcept>

namespace corvatto::test {

namespace {

// Nothing but what the test itself puts on it: no service is started.
constexpr auto busSettings = R"(<busconfig><type>session</type><listen>unix:path=SOCKET</listen>
  <policy context="default"><allow send_destination="*"/><allow receive_sender="*"/><allow own="*"/></policy>
</busconfig>
)";

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

TestDesktop::TestDesktop(const Options& options) {
    const auto inherited = QProcessEnvironment::systemEnvironment();
    m_environment.insert(QStringLiteral("PATH"), inherited.value(QStringLiteral("PATH")));
    for (const char* sanitizer : {"ASAN_OPTIONS", "LSAN_OPTIONS", "UBSAN_OPTIONS"}) {
        m_environment.insert(QLatin1String(sanitizer), inherited.value(QLatin1String(sanitizer)));
    }
    m_environment.insert(QStringLiteral("LANG"), QStringLiteral("C.UTF-8"));
    m_environment.insert(QStringLiteral("HOME"), m_home.path());
    for (const auto& [variable, folder] : {std::pair("XDG_DATA_HOME", "data"),
                                           {"XDG_CONFIG_HOME", "config"},
                                           {"XDG_CACHE_HOME", "cache"},
                                           {"XDG_RUNTIME_DIR", "runtime"}}) {
        std::filesystem::create_directory((home() + '/' + folder).constData());
        m_environment.insert(QLatin1String(variable), m_home.filePath(QLatin1String(folder)));
    }
    std::filesystem::permissions((home() + "/runtime").constData(), std::filesystem::perms::owner_all);

    // The server chooses a free display and writes its number, so that several tests can run at once.
    const QByteArray screen = QByteArray::number(options.screen.width()) + 'x' +
                              QByteArray::number(options.screen.height()) + "x24";
    m_server = std::make_unique<Process>(
        "Xvfb", QByteArrayList{"-displayfd", "1", "-screen", "0", screen, "-nolisten", "tcp", "-noreset"},
        m_environment, true);
    if (!soon([this] { return m_server->output().endsWith('\n') || !m_server->isRunning(); })) {
        throw std::runtime_error("the X server names no display");
    }
    m_display = ':' + m_server->output().trimmed();
    m_environment.insert(QStringLiteral("DISPLAY"), QString::fromLatin1(m_display));

    // Without an address, the bus library would start a bus for the display.
    const QByteArray socket = home() + "/runtime/test-bus";
    m_sessionBus = "unix:path=" + socket;
    m_environment.insert(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"), QString::fromUtf8(m_sessionBus));
    if (options.hasSessionBus) {
        const auto settings = writeFile("bus.conf", QByteArray(busSettings).replace("SOCKET", socket));
        m_bus = std::make_unique<Process>(
            "dbus-daemon", QByteArrayList{"--nofork", "--nopidfile", "--config-file", settings},
            m_environment, true);
        if (!soon([&] { return QFile::exists(QString::fromUtf8(socket)); })) {
            throw std::runtime_error("no session bus");
        }
    }
    m_windowManagerSettings = writeFile(
        "openbox.xml",
        QByteArray(windowManagerSettings).replace("BOTTOM", QByteArray::number(options.bottomMargin)));
    startWindowManager();
}

void TestDesktop::startWindowManager() {
    m_windowManager.reset();
    m_windowManager = std::make_unique<Process>(
        "openbox",
        QByteArrayList{"--sm-disable", "--config-file", m_windowManagerSettings, "--startup", "echo ready"},
        m_environment, true);
    if (!soon([this] { return m_windowManager->output() == "ready\n"; })) {
        throw std::runtime_error("no window manager");
    }
}

QByteArray TestDesktop::writeFile(const QByteArray& name, const QByteArray& bytes) const {
    QByteArray path = home() + '/' + name;
    std::filesystem::create_directories(std::filesystem::path(path.constData()).parent_path());
    QFile file(QString::fromUtf8(path));
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size()) {
        throw std::runtime_error("cannot write " + path.toStdString());
    }
    return path;
}

} // namespace corvatto::test
