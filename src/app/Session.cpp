#include "app/Session.h"

#include "base/Diagnostics.h"

#include <QApplication>

#include <atomic>
#include <cstdlib>
#include <mutex>

namespace corvatto {
namespace {

std::atomic_bool isInEventLoop = false;
std::once_flag isReported;
QtMessageHandler printMessage = nullptr;

void report(const QString& line) {
    if (isInEventLoop) {
        // Qt has a thread that ends the process as its next step. If it comes second, it waits for the line.
        std::call_once(isReported, printLine, line);
    }
}

// Two connections lead to a display, ours and Qt's. Either may notice first that the display is gone, and Qt
// then ends the process at once: on X11 by exit(), which runs what is registered for that...
void reportWhenQtExits() {
    report(QStringLiteral("[CorvattoApp] ERROR: The X server is gone."));
}

// ... and on Wayland by _exit(), after a message.
void reportWhenQtComplains(QtMsgType type, const QMessageLogContext& context, const QString& message) {
    if (message.startsWith(QLatin1String("The Wayland connection "))) {
        report(QStringLiteral("[CorvattoApp] ERROR: The Wayland compositor is gone."));
    } else if (!message.contains(QLatin1String("setNetWmStateOnUnmappedWindow() called on mapped window"))) {
        // That one tells of a window shown again before the server has hidden it, as by a quick second press
        // of the shortcut. The presenter asks for the states again in any case.
        printMessage(type, context, message);
    }
}

} // namespace

int Session::runEventLoop() {
    std::atexit(reportWhenQtExits);
    printMessage = qInstallMessageHandler(reportWhenQtComplains);
    isInEventLoop = true;
    const int status = QApplication::exec();
    isInEventLoop = false;
    qInstallMessageHandler(printMessage);
    return status;
}

void Session::displayLost(const QString& line) {
    report(line);
    QApplication::exit(EXIT_FAILURE);
}

} // namespace corvatto
