// What the user asked for on the command line.
#pragma once

#include <QString>
#include <QStringList>

#include <optional>

namespace corvatto {

struct CommandLine {
    enum class Action {
        run,  // start, or show the panel of the instance that runs
        show, // this and the next two are requests to the running instance
        toggle,
        quit,
        printStatus, // asks the running instance, too
        printVersion,
        printHelp,
    };

    Action action = Action::run;
    QString error; // why the arguments are invalid; empty when they are valid

    // `arguments` without the program's name.
    static CommandLine parse(const QStringList& arguments);

    static QString helpText();
};

// The request that is sent to a running instance for `action`; empty when the action needs no instance.
QString requestFor(CommandLine::Action action);

} // namespace corvatto
