#include "app/X11Session.h"

#include "base/Diagnostics.h"

#include <cstdlib>
#include <optional>
#include <utility>

namespace corvatto {
namespace {

// Sets a variable of the environment as long as it lives. Qt reads it in that time; programs that are opened
// later do not inherit it.
class ScopedVariable {
public:
    ScopedVariable(const char* name, const char* value) : m_name(name) {
        if (qEnvironmentVariableIsSet(name)) {
            m_before = qgetenv(name);
        }
        qputenv(name, value);
    }
    ~ScopedVariable() { m_before ? qputenv(m_name, *m_before) : qunsetenv(m_name); }
    ScopedVariable(const ScopedVariable&) = delete;
    ScopedVariable& operator=(const ScopedVariable&) = delete;

private:
    const char* m_name;
    std::optional<QByteArray> m_before;
};

bool isInEventLoop = false;

// Two connections lead to the server, ours and Qt's. Either may notice first that the server is gone, and Qt
// then calls exit() at once.
void reportLostServer() {
    if (std::exchange(isInEventLoop, false)) {
        printLine(u"[CorvattoApp] ERROR: The X server is gone.");
    }
}

} // namespace

std::unique_ptr<QApplication> X11Session::newApplication(int& argc, char** argv) {
    if (qEnvironmentVariableIsSet("WAYLAND_DISPLAY")) {
        printLine(u"[CorvattoApp] Wayland session: running through XWayland.");
    }
    if (!XcbConnection::serverIsReachable()) {
        // Qt would abort here, with a message for developers.
        printLine(u"[CorvattoApp] ERROR: Cannot connect to an X server, is DISPLAY set?");
        return nullptr;
    }
    const ScopedVariable plugin("QT_QPA_PLATFORM", "xcb");
    return std::make_unique<QApplication>(argc, argv);
}

std::unique_ptr<X11Session> X11Session::open() {
    auto connection = XcbConnection::open();
    if (!connection) {
        printLine(u"[CorvattoApp] ERROR: The X server takes no second connection.");
        return nullptr;
    }
    return std::unique_ptr<X11Session>(new X11Session(std::move(connection)));
}

X11Session::X11Session(std::unique_ptr<XcbConnection> connection)
    : m_connection(std::move(connection)), m_screens(*m_connection, m_qtScreens), m_workspace(*m_connection),
      m_pasteboard(*m_connection, [this](xcb_window_t owner) { return m_workspace.nameOfCopySource(owner); }),
      m_hotKeyCenter(*m_connection), m_presenter(*m_connection, m_screens), m_tray(*m_connection) {
    QObject::connect(m_connection.get(), &XcbConnection::disconnected, qApp, [] {
        reportLostServer();
        QApplication::exit(EXIT_FAILURE);
    });
}

Platform X11Session::platform() {
    return {m_pasteboard, m_workspace, m_hotKeyCenter, m_presenter, m_tray};
}

int X11Session::runEventLoop() {
    std::atexit(reportLostServer);
    isInEventLoop = true;
    const int status = QApplication::exec();
    isInEventLoop = false;
    return status;
}

} // namespace corvatto
