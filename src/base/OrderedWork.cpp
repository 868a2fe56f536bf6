#include "base/OrderedWork.h"

#include <QScopedValueRollback>

#include <utility>

namespace corvatto {

OrderedWork::OrderedWork() {
    QObject::connect(&m_watcher, &QFutureWatcherBase::finished, &m_watcher, [this] {
        // Told late, of work whose end finish() has waited for, while other work may be under way.
        if (m_watcher.isFinished()) {
            goOn();
        }
    });
}

void OrderedWork::add(std::function<void()> step) {
    m_steps.append(std::move(step));
    runSteps();
}

void OrderedWork::finish() {
    while (m_done) {
        m_watcher.waitForFinished();
        goOn();
    }
}

// After the work of a step.
void OrderedWork::goOn() {
    if (const auto done = std::exchange(m_done, nullptr)) {
        const QScopedValueRollback inStep(m_isInStep, true);
        done();
    }
    runSteps();
}

// Not within a step: what it adds comes after it.
void OrderedWork::runSteps() {
    while (!isBusy() && !m_steps.isEmpty()) {
        const QScopedValueRollback inStep(m_isInStep, true);
        m_steps.takeFirst()();
    }
}

} // namespace corvatto
