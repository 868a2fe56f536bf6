// The entry of the program. It answers the command line itself, without Qt, so that a key that is bound to a
// request takes effect at once, and loads the rest only when the program is to stay.
#include "command/CommandLine.h"
#include "command/InstanceRequest.h"
#include "command/StandardDescriptors.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>

#include <dlfcn.h>
#include <sys/stat.h>

using namespace corvatto;

#ifdef CORVATTO_ONE_BINARY
extern "C" int runProgram(int argc, char** argv);
#endif

namespace {

constexpr int usageError = 2; // exit status, as is usual for arguments that make no sense

int ask(std::string_view request) {
    const Answer answer = askInstance(instanceDirectory(), request);
    if (answer.outcome != Answer::Outcome::Done) {
        return reportNoAnswer(answer.outcome);
    }
    std::fputs(answer.text.c_str(), stdout);
    return EXIT_SUCCESS;
}

#ifndef CORVATTO_ONE_BINARY
// One binary is the whole program to those who look at the process, as KWin does before it grants anything.
int loadAndRun(int argc, char** argv) {
    void* library = dlopen(CORVATTO_LIBRARY, RTLD_NOW); // found by the run path of this binary
    void* entry = library != nullptr ? dlsym(library, "runProgram") : nullptr;
    if (entry == nullptr) {
        std::fprintf(stderr, "corvatto: %s\n", dlerror());
        return EXIT_FAILURE;
    }
    return reinterpret_cast<int (*)(int, char**)>(entry)(argc, argv);
}
#endif

} // namespace

int main(int argc, char** argv) {
    openClosedStandardDescriptors();
    // The history is private: only its user may read what this process creates.
    umask(S_IRWXG | S_IRWXO);
    // When the reader of our output goes away, a write must fail instead of ending the program.
    std::signal(SIGPIPE, SIG_IGN);

    const CommandLine commandLine = CommandLine::parse({argv + 1, argv + argc});
    if (!commandLine.error.empty()) {
        std::fprintf(stderr, "corvatto: %s\nTry 'corvatto --help'.\n", commandLine.error.c_str());
        return usageError;
    }
    switch (commandLine.action) {
    case CommandLine::Action::printVersion:
        std::puts("corvatto " CORVATTO_VERSION);
        return EXIT_SUCCESS;
    case CommandLine::Action::printHelp:
        std::puts(CommandLine::helpText());
        return EXIT_SUCCESS;
    case CommandLine::Action::printStatus:
        return ask(statusRequest);
    case CommandLine::Action::show:
        return ask("show");
    case CommandLine::Action::toggle:
        return ask("toggle");
    case CommandLine::Action::quit:
        return ask("quit");
    case CommandLine::Action::run:
        break;
    }
#ifdef CORVATTO_ONE_BINARY
    return runProgram(argc, argv);
#else
    return loadAndRun(argc, argv);
#endif
}
