// Turns SIGTERM, SIGINT and SIGHUP (the terminal was closed) into an orderly end of the event loop.
#pragma once

#include <QSocketNotifier>

#include <functional>
#include <memory>

namespace corvatto {

// There may be only one object. The handlers stay when it has gone and do nothing then. A signal that was
// ignored before stays ignored.
class TerminationSignals {
public:
    // `onTerminate` is called from the event loop, once for each signal.
    explicit TerminationSignals(std::function<void()> onTerminate);
    ~TerminationSignals();
    TerminationSignals(const TerminationSignals&) = delete;
    TerminationSignals& operator=(const TerminationSignals&) = delete;

private:
    std::function<void()> m_onTerminate;
    std::unique_ptr<QSocketNotifier> m_notifier;
};

} // namespace corvatto
