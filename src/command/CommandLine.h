// What the user asked for on the command line.
#pragma once

#include <string>
#include <string_view>
#include <vector>

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
    std::string error; // why the arguments are invalid; empty when they are valid

    // `arguments` without the program's name.
    static CommandLine parse(const std::vector<std::string_view>& arguments);

    static const char* helpText();
};

} // namespace corvatto
