// Turns SIGTERM and SIGINT into an orderly end of the event loop.
#pragma once

#include <QSocketNotifier>

#include <functional>
#include <memory>

namespace corvatto {

// There may be only one object. The handlers are installed while it lives.
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
