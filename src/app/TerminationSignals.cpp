#include "app/TerminationSignals.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <utility>

#include <fcntl.h>
#include <unistd.h>

namespace corvatto {
namespace {

// Writing to a descriptor is one of the few things that a signal handler may do.
std::array<int, 2> wakeUpPipe{-1, -1};

void handleSignal(int /*signal*/) {
    const int interrupted = errno; // of the code that the signal came in between
    const char byte = 0;
    [[maybe_unused]] const ssize_t written = write(wakeUpPipe[1], &byte, 1);
    errno = interrupted;
}

} // namespace

TerminationSignals::TerminationSignals(std::function<void()> onTerminate)
    : m_onTerminate(std::move(onTerminate)) {
    if (pipe2(wakeUpPipe.data(), O_CLOEXEC | O_NONBLOCK) != 0) {
        return; // the signals keep their default effect
    }
    m_notifier = std::make_unique<QSocketNotifier>(wakeUpPipe[0], QSocketNotifier::Read);
    QObject::connect(m_notifier.get(), &QSocketNotifier::activated, m_notifier.get(), [this] {
        std::array<char, 16> bytes;
        while (read(wakeUpPipe[0], bytes.data(), bytes.size()) > 0) {
        }
        m_onTerminate();
    });
    for (const int signal : {SIGTERM, SIGINT, SIGHUP}) {
        struct sigaction before {};
        sigaction(signal, nullptr, &before);
        if (before.sa_handler != SIG_IGN) { // as nohup has it
            struct sigaction action {};
            action.sa_handler = handleSignal;
            action.sa_flags = SA_RESTART;
            sigaction(signal, &action, nullptr);
        }
    }
}

TerminationSignals::~TerminationSignals() {
    if (!m_notifier) {
        return;
    }
    // The handlers stay: the end has begun, and another signal must not make it a sudden one.
    const auto pipe = std::exchange(wakeUpPipe, {-1, -1});
    m_notifier.reset();
    close(pipe[0]);
    close(pipe[1]);
}

} // namespace corvatto
