// The entry of the program, and the only place that chooses implementations of the platform layer.
#include "app/AppDelegate.h"
#include "app/CommandLine.h"
#include "app/SingleInstance.h"
#include "app/TerminationSignals.h"
#include "base/Diagnostics.h"
#include "platform/qt/ApplicationSupport.h"
#include "platform/qt/IcuRelativeDateTimeFormatter.h"
#include "platform/qt/IniUserDefaults.h"
#include "platform/qt/QtAlerts.h"
#include "platform/qt/QtScreens.h"
#include "platform/x11/X11HotKeyCenter.h"
#include "platform/x11/X11Pasteboard.h"
#include "platform/x11/X11Tray.h"
#include "platform/x11/X11WindowPresenter.h"
#include "platform/x11/X11Workspace.h"
#include "settings/ProductAddresses.h"
#include "update/UpdateChecker.h"

#include <QApplication>
#include <QDeadlineTimer>
#include <QLocale>
#include <QLoggingCategory>
#include <QThread>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <utility>

#include <sys/stat.h>

using namespace corvatto;

namespace {

constexpr int usageError = 2; // exit status, as is usual for arguments that make no sense

// What needs no display and no running program. Absent when there is more to do.
std::optional<int> answerAtOnce(const CommandLine& commandLine) {
    if (!commandLine.error.isEmpty()) {
        std::fprintf(stderr, "corvatto: %s\nTry 'corvatto --help'.\n", qUtf8Printable(commandLine.error));
        return usageError;
    }
    if (commandLine.action == CommandLine::Action::printVersion) {
        printLine(u"corvatto " CORVATTO_VERSION);
        return EXIT_SUCCESS;
    }
    if (commandLine.action == CommandLine::Action::printHelp) {
        printLine(CommandLine::helpText());
        return EXIT_SUCCESS;
    }
    return std::nullopt;
}

// Hands the request to the instance that runs. Absent when this process is to become it.
std::optional<int> askRunningInstance(SingleInstance& instance, CommandLine::Action action) {
    if (action != CommandLine::Action::run) {
        if (instance.send(requestFor(action))) {
            return EXIT_SUCCESS;
        }
        std::fputs("corvatto: no Corvatto is running.\n", stderr);
        return EXIT_FAILURE;
    }
    if (instance.becomePrimary()) {
        return std::nullopt;
    }
    // The other one may be starting still, and not listen yet.
    const QDeadlineTimer deadline(std::chrono::seconds(5));
    while (!deadline.hasExpired()) {
        if (instance.send(requestFor(action))) {
            return EXIT_SUCCESS;
        }
        QThread::msleep(50);
    }
    std::fputs("corvatto: a Corvatto is running, but it does not answer.\n", stderr);
    return EXIT_FAILURE;
}

// A variable of the environment for as long as this lives: for Qt, but not for the programs that are opened
// later, which inherit the environment.
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

// Two connections lead to the server. When it goes, either may notice first, and Qt then ends the process on
// the spot.
void tellOfLostServer() {
    if (std::exchange(isInEventLoop, false)) {
        printLine(u"[CorvattoApp] ERROR: The X server is gone.");
    }
}

void obey(AppDelegate& delegate, const QString& request) {
    if (request == QLatin1String("show")) {
        delegate.showHistoryWindow();
    } else if (request == QLatin1String("toggle")) {
        delegate.toggleHistoryWindow();
    } else if (request == QLatin1String("quit")) {
        delegate.terminate();
    }
}

} // namespace

int main(int argc, char** argv) {
    // The history is nobody else's business: whatever this process creates is its user's alone.
    umask(S_IRWXG | S_IRWXO);
    // A reader of our output that goes away must not take the program with it.
    std::signal(SIGPIPE, SIG_IGN);

    QStringList arguments;
    for (int i = 1; i < argc; ++i) {
        arguments.append(QString::fromLocal8Bit(argv[i]));
    }
    const CommandLine commandLine = CommandLine::parse(arguments);
    if (const auto status = answerAtOnce(commandLine)) {
        return *status;
    }
    SingleInstance instance(SingleInstance::defaultDirectory());
    if (const auto status = askRunningInstance(instance, commandLine.action)) {
        return *status;
    }

    if (qEnvironmentVariableIsSet("WAYLAND_DISPLAY")) {
        printLine(u"[CorvattoApp] Wayland session: running through XWayland.");
    }
    std::optional<ScopedVariable> platform(std::in_place, "QT_QPA_PLATFORM", "xcb");
    if (!XcbConnection::serverIsReachable()) {
        // Qt would abort here, with words for developers.
        printLine(u"[CorvattoApp] ERROR: Cannot connect to an X server, is DISPLAY set?");
        return EXIT_FAILURE;
    }

    // What Qt says about images that it cannot read may quote them.
    QLoggingCategory::setFilterRules(QStringLiteral("qt.gui.imageio*=false"));

    QApplication application(argc, argv);
    platform.reset();
    QApplication::setApplicationName(QStringLiteral("corvatto"));
    QApplication::setApplicationVersion(QStringLiteral(CORVATTO_VERSION));
    QApplication::setDesktopFileName(QStringLiteral("corvatto"));
    QApplication::setWindowIcon(QIcon(QStringLiteral(":/corvatto.svg")));

    const auto connection = XcbConnection::open();
    if (!connection) {
        printLine(u"[CorvattoApp] ERROR: The X server takes no second connection.");
        return EXIT_FAILURE;
    }
    IniUserDefaults defaults(settingsFilePath());
    X11Workspace workspace(*connection);
    X11Pasteboard pasteboard(*connection, workspace);
    X11HotKeyCenter hotKeyCenter(*connection);
    X11Tray tray(*connection);
    QtScreens screens;
    X11WindowPresenter presenter(*connection, screens);
    QtAlerts alerts;
    const IcuRelativeDateTimeFormatter relativeTimes(QLocale::system().bcp47Name());

    UpdateChecker updateChecker({defaults, alerts, workspace}, ProductAddresses::updateDocument,
                                QStringLiteral(CORVATTO_VERSION));
    UpdateChecker::install(updateChecker);

    AppDelegate delegate({applicationSupportDirectory(), defaults, pasteboard, workspace, hotKeyCenter, tray,
                          presenter, alerts, relativeTimes, QStringLiteral(CORVATTO_VERSION)});
    QObject::connect(&application, &QApplication::aboutToQuit, &delegate,
                     &AppDelegate::applicationWillTerminate);
    QObject::connect(connection.get(), &XcbConnection::disconnected, &application, [] {
        tellOfLostServer();
        QApplication::exit(EXIT_FAILURE);
    });
    const TerminationSignals signals([&delegate] { delegate.terminate(); });

    delegate.applicationDidFinishLaunching();
    instance.listen([&delegate](const QString& request) { obey(delegate, request); });
    std::atexit(tellOfLostServer);
    isInEventLoop = true;
    const int status = QApplication::exec();
    isInEventLoop = false;
    return status;
}
