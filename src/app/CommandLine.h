// What the user asked for on the command line.
#pragma once

#include <QString>
#include <QStringList>

#include <optional>

namespace corvatto {

struct CommandLine {
    enum class Action {
        run,    // start, or show the panel of the instance that runs
        show,   // the rest are for the running instance
        toggle, //
        quit,
        printVersion,
        printHelp,
    };

    Action action = Action::run;
    QString error; // not empty: the arguments make no sense, and this says why

    // `arguments` without the program's name.
    static CommandLine parse(const QStringList& arguments);

    static QString helpText();
};

// The word that asks a running instance for `action`; empty for what needs none.
QString requestFor(CommandLine::Action action);

} // namespace corvatto
