// Steps that take effect one after another although some of them wait for the disk: such a step goes on
// beside the main thread, and those after it wait until it has ended.
#pragma once

#include "base/Worker.h"

#include <QList>

#include <functional>
#include <memory>
#include <optional>

namespace corvatto {

// Main thread. What waits when the object is destroyed is dropped; what is under way ends, unheard.
class OrderedWork {
public:
    OrderedWork();
    OrderedWork(const OrderedWork&) = delete;
    OrderedWork& operator=(const OrderedWork&) = delete;

    // Runs `step` at once, or when all steps before it have ended.
    void add(std::function<void()> step);

    // At the end of a step: runs `work`, a pure function of what it holds, on the thread for the disk, and
    // then `done` with its result from the event loop. The step has ended with that.
    template <typename Work, typename Done>
    void goOnBeside(Work work, Done done) {
        const auto result = std::make_shared<std::optional<std::invoke_result_t<Work>>>();
        m_done = [result, done = std::move(done)] {
            done(std::move(**result));
        };
        m_watcher.setFuture(
            QtConcurrent::run(&diskWorker(), [result, work = std::move(work)] { result->emplace(work()); }));
    }

    // Whether a step is under way.
    bool isBusy() const { return m_done || m_isInStep; }

    // Waits until every step has ended.
    void finish();

private:
    void goOn();
    void runSteps();

    QList<std::function<void()>> m_steps; // that wait
    std::function<void()> m_done;         // of the work that is under way
    bool m_isInStep = false;
    QFutureWatcher<void> m_watcher;
};

} // namespace corvatto
