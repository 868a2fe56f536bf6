// Work beside the main thread.
#pragma once

#include <QFutureWatcher>
#include <QThreadPool>
#include <QtConcurrent>

#include <type_traits>

namespace corvatto {

// The threads of runOnWorker(). Not Qt's own pool, over which Qt spreads the conversion of a large picture,
// and then waits for it: slow work there would hold up the main thread.
QThreadPool& workers();

// One thread for what waits for the disk. It does one thing after another, in the order in which they are
// given to it.
QThreadPool& diskWorker();

// Runs `work`, a pure function of what it holds, on a worker thread, and calls `done` with its result from
// the event loop of the calling thread, unless `context` has gone by then. `done` may destroy the context.
//
// Not QFuture::then(), which in Qt 6.4 refers to a context that has gone.
template <typename Work, typename Done>
void runOnWorker(QObject& context, Work work, Done done) {
    using Result = std::invoke_result_t<Work>;
    auto* watcher = new QFutureWatcher<Result>(&context);
    QObject::connect(
        watcher, &QFutureWatcherBase::finished, &context,
        [watcher, done = std::move(done)] {
            watcher->deleteLater();
            done(watcher->result());
        },
        Qt::QueuedConnection);
    watcher->setFuture(QtConcurrent::run(&workers(), std::move(work)));
}

} // namespace corvatto
