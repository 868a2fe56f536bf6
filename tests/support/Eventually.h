// The only way that tests wait: until a condition holds, or a deadline passes.
#pragma once

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QEventLoop>

#include <chrono>

namespace corvatto::test {

// Runs the event loop until `condition()` is true. False when the deadline passed first.
template <typename Condition>
bool eventually(Condition condition, std::chrono::milliseconds deadline = std::chrono::seconds(10)) {
    const QDeadlineTimer timer(deadline);
    while (!condition()) {
        if (timer.hasExpired()) {
            return condition();
        }
        QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
    return true;
}

} // namespace corvatto::test
