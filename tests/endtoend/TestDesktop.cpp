#include "TestDesktop.h"

#include <QFile>

#include <filesystem>
#include <stdexcept>

#include <unistd.h>

namespace corvatto::test {

namespace {

// Nothing but what the test itself puts on it: no service is started.
constexpr auto busSettings = R"(<busconfig><type>session</type><listen>unix:path=SOCKET</listen>
  <policy context="default"><allow send_destination="*"/><allow receive_sender="*"/><allow own="*"/></policy>
</busconfig>
)";

} // namespace

TestDesktop::TestDesktop(const Options& options) : m_screen(options.screen) {
    const auto inherited = QProcessEnvironment::systemEnvironment();
    for (const char* variable : {"PATH", "ASAN_OPTIONS", "LSAN_OPTIONS", "UBSAN_OPTIONS"}) {
        m_environment.insert(QLatin1String(variable), inherited.value(QLatin1String(variable)));
    }
    setVariable("LANG", "C.UTF-8");
    setVariable("HOME", home());
    for (const auto& [variable, folder] : {std::pair("XDG_DATA_HOME", "/data"),
                                           {"XDG_CONFIG_HOME", "/config"},
                                           {"XDG_CACHE_HOME", "/cache"},
                                           {"XDG_RUNTIME_DIR", "/runtime"}}) {
        std::filesystem::create_directory((home() + folder).constData());
        setVariable(variable, home() + folder);
    }
    std::filesystem::permissions((home() + "/runtime").constData(), std::filesystem::perms::owner_all);

    // Without an address, the bus library would start a bus for the display.
    const QByteArray socket = home() + "/runtime/test-bus";
    m_sessionBus = "unix:path=" + socket;
    setVariable("DBUS_SESSION_BUS_ADDRESS", m_sessionBus);
    if (options.hasSessionBus) {
        const auto settings = writeFile("bus.conf", QByteArray(busSettings).replace("SOCKET", socket));
        m_bus = std::make_unique<Process>(
            "dbus-daemon", QByteArrayList{"--nofork", "--nopidfile", "--config-file", settings},
            m_environment, true);
        if (!soon([&] { return QFile::exists(QString::fromUtf8(socket)); })) {
            throw std::runtime_error("no session bus");
        }
    }
}

void TestDesktop::setVariable(const char* name, const QByteArray& value) {
    m_environment.insert(QLatin1String(name), QString::fromUtf8(value));
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

void TestDesktop::openWindow(const QByteArray& application) {
    m_windows.push_back(
        std::make_unique<Process>(WINDOW_CLIENT, QByteArrayList{application}, environment(), true));
    if (!soon([&] {
            return windowInFront(0).application == application && pixel({9, 9}) == QColor(Qt::magenta);
        })) {
        throw std::runtime_error("no window of " + application.toStdString());
    }
    // A window of Qt's asks for the keyboard when it has just got it. KWin may hear that late, and would take
    // the keyboard from a panel that is shown meanwhile.
    usleep(300'000);
}

std::optional<QByteArray> TestDesktop::outputOf(const QByteArray& program,
                                                const QByteArrayList& arguments) const {
    Process process(program, arguments, m_environment, true);
    return process.exitStatus() == 0 ? std::optional(process.output()) : std::nullopt;
}

} // namespace corvatto::test
