// Work beside the main thread.
#pragma once

#include <QFutureWatcher>
#include <QtConcurrent>

#include <type_traits>

namespace corvatto {

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
    watcher->setFuture(QtConcurrent::run(std::move(work)));
}

} // namespace corvatto
