// The entry of the program: arguments, single instance, session, delegate, event loop.
#include "app/AppDelegate.h"
#include "app/CommandLine.h"
#include "app/SessionStart.h"
#include "app/SingleInstance.h"
#include "app/TerminationSignals.h"
#include "base/Diagnostics.h"
#include "platform/qt/ApplicationSupport.h"
#include "platform/qt/IcuRelativeDateTimeFormatter.h"
#include "platform/qt/IniUserDefaults.h"
#include "platform/qt/QtAlerts.h"
#include "settings/ProductAddresses.h"
#include "update/UpdateChecker.h"

#include <QDeadlineTimer>
#include <QLocale>
#include <QLoggingCategory>
#include <QThread>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <optional>

#include <sys/stat.h>

using namespace corvatto;

namespace {

constexpr int usageError = 2; // exit status, as is usual for arguments that make no sense

// Handles what needs no display and no running program. Absent when there is more to do.
std::optional<int> printInformation(const CommandLine& commandLine) {
    if (!commandLine.error.isEmpty()) {
        std::fprintf(stderr, "corvatto: %s\nTry 'corvatto --help'.\n", qUtf8Printable(commandLine.error));
        return usageError;
    }
    if (commandLine.action == CommandLine::Action::printVersion) {
        std::puts("corvatto " CORVATTO_VERSION);
        return EXIT_SUCCESS;
    }
    if (commandLine.action == CommandLine::Action::printHelp) {
        std::puts(qUtf8Printable(CommandLine::helpText()));
        return EXIT_SUCCESS;
    }
    return std::nullopt;
}

using Answer = SingleInstance::Answer;

int reportNoAnswer(Answer answer) {
    std::fputs(answer == Answer::Nobody ? "corvatto: no Corvatto is running.\n"
                                        : "corvatto: a Corvatto is running, but it does not answer.\n",
               stderr);
    return EXIT_FAILURE;
}

int printStatus(const SingleInstance& instance) {
    QString status;
    const Answer answer = instance.status(status);
    if (answer != Answer::Done) {
        return reportNoAnswer(answer);
    }
    std::puts(qUtf8Printable(status));
    return EXIT_SUCCESS;
}

// Passes the request on to the running instance. Absent when there is none and this process becomes it.
std::optional<int> forwardToRunningInstance(SingleInstance& instance, CommandLine::Action action) {
    const bool starts = action == CommandLine::Action::run;
    // The other instance may still be starting and not listen yet, or be about to end.
    const QDeadlineTimer deadline(std::chrono::seconds(5));
    for (;;) {
        if (starts && instance.becomePrimary()) {
            return std::nullopt;
        }
        const Answer answer = instance.send(requestFor(action));
        if (answer == Answer::Done) {
            return EXIT_SUCCESS;
        }
        if (starts && !deadline.hasExpired()) {
            QThread::msleep(50);
            continue;
        }
        return reportNoAnswer(starts ? Answer::None : answer);
    }
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

} // namespace

int main(int argc, char** argv) {
    openClosedStandardDescriptors();
    printQtMessagesWithoutWaiting();
    // The history is private: only its user may read what this process creates.
    umask(S_IRWXG | S_IRWXO);
    // When the reader of our output goes away, a write must fail instead of ending the program.
    std::signal(SIGPIPE, SIG_IGN);

    QStringList arguments;
    for (int i = 1; i < argc; ++i) {
        arguments.append(QString::fromLocal8Bit(argv[i]));
    }
    const CommandLine commandLine = CommandLine::parse(arguments);
    if (const auto status = printInformation(commandLine)) {
        return *status;
    }
    SingleInstance instance(SingleInstance::defaultDirectory());
    if (commandLine.action == CommandLine::Action::printStatus) {
        return printStatus(instance);
    }
    if (const auto status = forwardToRunningInstance(instance, commandLine.action)) {
        return *status;
    }

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
    UpdateChecker updateChecker({defaults, alerts, platform.workspace}, ProductAddresses::updateDocument,
                                QStringLiteral(CORVATTO_VERSION));
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
