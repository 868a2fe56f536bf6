#include "app/TerminationSignals.h"

#include <array>
#include <csignal>

#include <fcntl.h>
#include <unistd.h>

namespace corvatto {
namespace {

// Writing to a descriptor is one of the few things that a signal handler may do.
std::array<int, 2> wakeUpPipe{-1, -1};

void handleSignal(int /*signal*/) {
    const char byte = 0;
    [[maybe_unused]] const ssize_t written = write(wakeUpPipe[1], &byte, 1);
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
    struct sigaction action {};
    action.sa_handler = handleSignal;
    action.sa_flags = SA_RESTART;
    sigaction(SIGTERM, &action, nullptr);
    sigaction(SIGINT, &action, nullptr);
}

TerminationSignals::~TerminationSignals() {
    if (!m_notifier) {
        return;
    }
    // The end has begun; another signal must not make it a sudden one.
    std::signal(SIGTERM, SIG_IGN);
    std::signal(SIGINT, SIG_IGN);
    m_notifier.reset();
    close(wakeUpPipe[0]);
    close(wakeUpPipe[1]);
}

} // namespace corvatto
