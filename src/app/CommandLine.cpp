#include "app/CommandLine.h"

#include <QHash>

namespace corvatto {

CommandLine CommandLine::parse(const QStringList& arguments) {
    static const QHash<QString, Action> actions{
        {QStringLiteral("--show"), Action::show},
        {QStringLiteral("--toggle"), Action::toggle},
        {QStringLiteral("--quit"), Action::quit},
        {QStringLiteral("--version"), Action::printVersion},
        {QStringLiteral("--status"), Action::printStatus},
        {QStringLiteral("-v"), Action::printVersion},
        {QStringLiteral("--help"), Action::printHelp},
        {QStringLiteral("-h"), Action::printHelp},
    };
    CommandLine commandLine;
    for (const QString& argument : arguments) {
        const auto action = actions.constFind(argument);
        if (action == actions.constEnd()) {
            commandLine.error = argument.startsWith(QLatin1Char('-'))
                                    ? QStringLiteral("unknown option '%1'").arg(argument)
                                    : QStringLiteral("unexpected argument '%1'").arg(argument);
            return commandLine;
        }
        if (commandLine.action != Action::run && commandLine.action != *action) {
            commandLine.error = QStringLiteral("'%1' does not go with what is asked before it").arg(argument);
            return commandLine;
        }
        commandLine.action = *action;
    }
    return commandLine;
}

QString CommandLine::helpText() {
    return QStringLiteral(
        "Usage: corvatto [OPTION]\n"
        "Clipboard history: starts it, or shows the panel when it runs already.\n"
        "\n"
        "  --show         show the panel of the running Corvatto\n"
        "  --toggle       show or hide it; to be bound to a key where a desktop grants no\n"
        "                 global shortcut\n"
        "  --quit         end the running Corvatto\n"
        "  --status       print which version runs, and on which display system\n"
        "  -v, --version  print the version\n"
        "  -h, --help     print this help\n"
        "\n"
        "Exit status: 0 on success, 1 on failure or when none is running, 2 for arguments that\n"
        "make no sense.");
}

QString requestFor(CommandLine::Action action) {
    switch (action) {
    case CommandLine::Action::run:
    case CommandLine::Action::show:
        return QStringLiteral("show");
    case CommandLine::Action::toggle:
        return QStringLiteral("toggle");
    case CommandLine::Action::quit:
        return QStringLiteral("quit");
    case CommandLine::Action::printStatus:
    case CommandLine::Action::printVersion:
    case CommandLine::Action::printHelp:
        break;
    }
    return {};
}

} // namespace corvatto
