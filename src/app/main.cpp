// The entry of the program, and the only place that chooses implementations of the platform layer.
#include "app/AppDelegate.h"
#include "app/TerminationSignals.h"
#include "platform/Diagnostics.h"
#include "platform/qt/ApplicationSupport.h"
#include "platform/qt/IcuRelativeDateTimeFormatter.h"
#include "platform/qt/IniUserDefaults.h"
#include "platform/qt/QtAlerts.h"
#include "platform/qt/QtScreens.h"
#include "platform/x11/X11HotKeyCenter.h"
#include "platform/x11/X11PanelWindows.h"
#include "platform/x11/X11Pasteboard.h"
#include "platform/x11/X11Workspace.h"

#include <QApplication>
#include <QLocale>

#include <csignal>
#include <cstdlib>

#include <sys/stat.h>

using namespace corvatto;

int main(int argc, char** argv) {
    // The history is nobody else's business: whatever this process creates is its user's alone.
    umask(S_IRWXG | S_IRWXO);
    // A reader of our output that goes away must not take the program with it.
    std::signal(SIGPIPE, SIG_IGN);

    if (qEnvironmentVariableIsSet("WAYLAND_DISPLAY")) {
        printLine(u"[CorvattoApp] Wayland session: running through XWayland.");
    }
    qputenv("QT_QPA_PLATFORM", "xcb");
    if (!XcbConnection::serverIsReachable()) {
        // Qt would abort here, with words for developers.
        printLine(u"[CorvattoApp] ERROR: Cannot connect to an X server, is DISPLAY set?");
        return EXIT_FAILURE;
    }

    QApplication application(argc, argv);
    QApplication::setApplicationName(QStringLiteral("corvatto"));
    QApplication::setApplicationDisplayName(QStringLiteral("Corvatto"));
    QApplication::setApplicationVersion(QStringLiteral(CORVATTO_VERSION));
    QApplication::setDesktopFileName(QStringLiteral("corvatto"));

    const auto connection = XcbConnection::open();
    if (!connection) {
        printLine(u"[CorvattoApp] ERROR: The X server takes no second connection.");
        return EXIT_FAILURE;
    }
    IniUserDefaults defaults(settingsFilePath());
    X11Pasteboard pasteboard(*connection);
    X11Workspace workspace(*connection);
    X11HotKeyCenter hotKeyCenter(*connection);
    X11PanelWindows panelWindows(*connection);
    QtScreens screens;
    QtAlerts alerts;
    const IcuRelativeDateTimeFormatter relativeTimes(QLocale::system().bcp47Name());

    AppDelegate delegate({applicationSupportDirectory(), defaults, pasteboard, workspace, hotKeyCenter,
                          screens, panelWindows, alerts, relativeTimes});
    QObject::connect(&application, &QApplication::aboutToQuit, &delegate,
                     &AppDelegate::applicationWillTerminate);
    QObject::connect(connection.get(), &XcbConnection::disconnected, &application, [] {
        printLine(u"[CorvattoApp] ERROR: The X server is gone.");
        QApplication::exit(EXIT_FAILURE);
    });
    const TerminationSignals signals([] { QApplication::quit(); });

    delegate.applicationDidFinishLaunching();
    return QApplication::exec();
}
