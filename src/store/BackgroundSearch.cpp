#include "BackgroundSearch.h"

#include "ContentReader.h"
#include "ItemRow.h"
#include "LikeFunction.h"
#include "SqliteStatement.h"
#include "WorkerConnection.h"

#include <QtConcurrent>

#include <utility>

namespace corvatto {
namespace {

// Reads the table from its beginning to its end, because a disk is slow at reading it in the order of the
// index. What is sorted are only numbers, of which SQLite keeps as many as the limit.
constexpr char searchSql[] = "SELECT " CORVATTO_ITEM_COLUMNS " FROM clipboard_items WHERE id IN ("
                             " SELECT id FROM clipboard_items NOT INDEXED"
                             " WHERE content LIKE ?1 OR preview LIKE ?1 OR source_app LIKE ?1"
                             " OR content_type LIKE ?1"
                             " ORDER BY last_copied_at DESC, id DESC LIMIT ?2)"
                             " ORDER BY last_copied_at DESC, id DESC";

constexpr int instructionsBetweenLooks = 100; // whether the search has been cancelled

int isCancelled(void* flag) {
    return static_cast<const std::atomic_bool*>(flag)->load() ? 1 : 0;
}

std::optional<QList<ClipboardItem>> find(sqlite3* db, const QByteArray& pattern, int limit,
                                         const QByteArray& database) {
    SqliteStatement query(db, searchSql);
    if (!query.isPrepared()) {
        return std::nullopt;
    }
    query.bindUtf8(1, pattern);
    query.bindInt64(2, limit);
    QList<ClipboardItem> items;
    int status = query.step();
    for (; status == SQLITE_ROW; status = query.step()) {
        items.append(rowToItem(query));
    }
    return status == SQLITE_DONE && addContents(items, db, database) ? std::optional(items) : std::nullopt;
}

} // namespace

BackgroundSearch::BackgroundSearch(QByteArray database) : m_database(std::move(database)) {
    m_pool.setMaxThreadCount(1);
    QObject::connect(&m_watcher, &QFutureWatcherBase::finished, &m_watcher, [this] {
        m_isCancelled.reset();
        if (const auto done = std::exchange(m_done, nullptr)) {
            done(m_watcher.result());
        }
    });
}

BackgroundSearch::~BackgroundSearch() {
    stop();
}

void BackgroundSearch::start(const QByteArray& pattern, int limit, std::function<void(Result)> done) {
    cancel();
    m_done = std::move(done);
    m_isCancelled = std::make_shared<std::atomic_bool>(false);
    m_watcher.setFuture(
        QtConcurrent::run(&m_pool, [database = m_database, pattern, limit, flag = m_isCancelled]() -> Result {
            sqlite3* db = nullptr;
            Result result;
            if (sqlite3_open_v2(database.constData(), &db, SQLITE_OPEN_READONLY, nullptr) == SQLITE_OK) {
                letGoQuietly(db);
                installLikeFunction(db);
                // Not sqlite3_interrupt(), which could come before the statement has begun.
                sqlite3_progress_handler(db, instructionsBetweenLooks, isCancelled, flag.get());
                result = find(db, pattern, limit, database);
            }
            sqlite3_close(db);
            return result;
        }));
}

void BackgroundSearch::cancel() {
    m_done = nullptr;
    if (m_isCancelled) {
        m_isCancelled->store(true);
    }
}

void BackgroundSearch::stop() {
    cancel();
    m_pool.waitForDone();
}

} // namespace corvatto
