#include "command/CommandLine.h"

#include <algorithm>
#include <array>
#include <utility>

namespace corvatto {
namespace {

using Action = CommandLine::Action;

constexpr std::array<std::pair<std::string_view, Action>, 8> actions{{
    {"--show", Action::show},
    {"--toggle", Action::toggle},
    {"--quit", Action::quit},
    {"--status", Action::printStatus},
    {"--version", Action::printVersion},
    {"-v", Action::printVersion},
    {"--help", Action::printHelp},
    {"-h", Action::printHelp},
}};

std::string quoted(std::string_view argument) {
    return std::string("'").append(argument).append("'");
}

} // namespace

CommandLine CommandLine::parse(const std::vector<std::string_view>& arguments) {
    CommandLine commandLine;
    for (const std::string_view argument : arguments) {
        const auto* known = std::find_if(actions.begin(), actions.end(),
                                         [argument](const auto& each) { return each.first == argument; });
        if (known == actions.end()) {
            commandLine.error =
                (argument.starts_with('-') ? "unknown option " : "unexpected argument ") + quoted(argument);
            return commandLine;
        }
        if (commandLine.action != Action::run && commandLine.action != known->second) {
            commandLine.error = quoted(argument) + " does not go with what is asked before it";
            return commandLine;
        }
        commandLine.action = known->second;
    }
    return commandLine;
}

const char* CommandLine::helpText() {
    return "Usage: corvatto [OPTION]\n"
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
           "make no sense.";
}

} // namespace corvatto
