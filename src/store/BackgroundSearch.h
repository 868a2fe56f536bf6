// A search beside the main thread, for a history too large to be searched between two keys. It has a
// connection of its own that only reads, which the write-ahead log lets it do while others write. Private to
// this room.
#pragma once

#include "store/ClipboardItem.h"

#include <QByteArray>
#include <QFutureWatcher>
#include <QList>
#include <QThreadPool>

#include <atomic>
#include <functional>
#include <memory>
#include <optional>

namespace corvatto {

// Main thread.
class BackgroundSearch {
public:
    // Absent when SQLite fails.
    using Result = std::optional<QList<ClipboardItem>>;

    // The database's path as the system spells it.
    explicit BackgroundSearch(QByteArray database);
    ~BackgroundSearch(); // stops
    BackgroundSearch(const BackgroundSearch&) = delete;
    BackgroundSearch& operator=(const BackgroundSearch&) = delete;

    // Looks for the LIKE pattern in place of what was looked for before, and calls `done` with the newest
    // `limit` matches, the newest first, from the event loop.
    void start(const QByteArray& pattern, int limit, std::function<void(Result)> done);

    // Ends the search. Its `done` is not called any more.
    void cancel();

    // Cancels, and returns when nothing is read any more, which takes a millisecond or so.
    void stop();

private:
    const QByteArray m_database;
    std::shared_ptr<std::atomic_bool> m_isCancelled; // the running search's; null when there is none
    std::function<void(Result)> m_done;
    QThreadPool m_pool; // one thread: a search begins when the one before it has ended
    QFutureWatcher<Result> m_watcher;
};

} // namespace corvatto
