// The program that stays: single instance, session, delegate, event loop.
#include "app/AppDelegate.h"
#include "app/SessionStart.h"
#include "app/SingleInstance.h"
#include "app/TerminationSignals.h"
#include "base/Diagnostics.h"
#include "command/InstanceRequest.h"
#include "platform/qt/ApplicationSupport.h"
#include "platform/qt/IcuRelativeDateTimeFormatter.h"
#include "platform/qt/IniUserDefaults.h"
#include "platform/qt/QtAlerts.h"
#include "settings/ProductAddresses.h"
#include "update/UpdateChecker.h"

#include <QDeadlineTimer>
#include <QFileInfo>
#include <QLocale>
#include <QLoggingCategory>
#include <QThread>

#include <cstdlib>
#include <optional>

#include <dlfcn.h>

using namespace corvatto;

namespace {

// Has the running instance show its panel. Absent when there is none and this process becomes it.
std::optional<int> becomeInstance(SingleInstance& instance, const std::string& directory) {
    // The other instance may still be starting and not listen yet, or be about to end.
    const QDeadlineTimer deadline(std::chrono::seconds(5));
    while (!instance.becomePrimary()) {
        if (askInstance(directory, "show").outcome == Answer::Outcome::Done) {
            return EXIT_SUCCESS;
        }
        if (deadline.hasExpired()) {
            return reportNoAnswer(Answer::Outcome::None);
        }
        QThread::msleep(50);
    }
    return std::nullopt;
}

void handleRequest(AppDelegate& delegate, const QString& request) {
    if (request == QLatin1String("show")) {
        delegate.showHistoryWindow();
    } else if (request == QLatin1String("toggle")) {
        delegate.toggleHistoryWindow();
    } else if (request == QLatin1String("quit")) {
        delegate.terminate();
    }
}

// It stands beside the file that holds this code: the library, where there is one.
QString fetchHelperPath() {
    Dl_info code{};
    dladdr(reinterpret_cast<const void*>(&fetchHelperPath), &code);
    const QFileInfo file(QFile::decodeName(code.dli_fname));
    return file.absolutePath() + QStringLiteral("/" CORVATTO_FETCH);
}

} // namespace

// Called by main() in the binary. Returns the exit status. What `argv` holds but the name of the program is
// not looked at.
extern "C" int runProgram(int argc, char** argv) {
    printQtMessagesWithoutWaiting();
    const std::string directory = instanceDirectory();
    SingleInstance instance(directory);
    if (const auto status = becomeInstance(instance, directory)) {
        return *status;
    }

    // Now, before variables are set that are for our own windows.
    const FetchHelper fetchHelper{fetchHelperPath(), QProcessEnvironment::systemEnvironment()};

    // Qt's messages about images that it cannot read may quote them.
    QLoggingCategory::setFilterRules(QStringLiteral("qt.gui.imageio*=false"));
    // As trays and the class of the windows show it; the desktop entry goes by the same class.
    QApplication::setApplicationName(QStringLiteral("Corvatto"));
    QApplication::setApplicationVersion(QStringLiteral(CORVATTO_VERSION));
    QApplication::setDesktopFileName(QStringLiteral("corvatto"));
    const StartedSession started = startSession(argc, argv);
    if (!started.session) {
        return EXIT_FAILURE;
    }
    QApplication::setWindowIcon(QIcon(QStringLiteral(":/corvatto.svg")));

    IniUserDefaults defaults(settingsFilePath());
    QtAlerts alerts;
    const IcuRelativeDateTimeFormatter relativeTimes(QLocale::system().bcp47Name());
    const Platform platform = started.session->platform();
    UpdateChecker updateChecker({defaults, alerts, platform.workspace}, fetchHelper,
                                ProductAddresses::updateDocument, QStringLiteral(CORVATTO_VERSION));
    UpdateChecker::install(updateChecker);
    AppDelegate delegate(
        {QStringLiteral(CORVATTO_VERSION), applicationSupportDirectory(), defaults, alerts, relativeTimes},
        platform);
    QObject::connect(qApp, &QApplication::aboutToQuit, &delegate, &AppDelegate::applicationWillTerminate);
    const TerminationSignals signals([&delegate] { delegate.terminate(); });
    instance.setStatus(QStringLiteral("Corvatto " CORVATTO_VERSION ". ") +
                       description(started.displaySystem));
    // First, so that a request that comes while the panel opens waits for its answer in the event loop.
    instance.listen([&delegate](const QString& request) { handleRequest(delegate, request); });
    delegate.applicationDidFinishLaunching();
    return Session::runEventLoop();
}
