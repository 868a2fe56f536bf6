// The longest time for which an event loop is held up.
#pragma once

#include <QCoreApplication>
#include <QElapsedTimer>

#include <algorithm>

#include <unistd.h>

namespace corvatto::bench {

class Stall {
public:
    // Does `work` as one event would.
    template <typename Work>
    void time(const Work& work) {
        QElapsedTimer timer;
        timer.start();
        work();
        m_longest = std::max(m_longest, timer.nsecsElapsed());
    }

    // Runs the event loop until then.
    template <typename Condition>
    void timeUntil(const Condition& isOver) {
        while (!isOver()) {
            time([] { QCoreApplication::processEvents(); });
            usleep(200); // the processor is the worker's
        }
    }

    double seconds() const { return static_cast<double>(m_longest) / 1e9; }

private:
    qint64 m_longest = 0; // ns
};

} // namespace corvatto::bench
