// Opening and closing the store, and clearing the history. Schema, recording and queries are in the files
// beside this one.
#include "store/ClipboardStore.h"

#include "base/Diagnostics.h"

#include "BackgroundSearch.h"
#include "Clearing.h"
#include "FetchCache.h"
#include "Retention.h"
#include "WorkerConnection.h"
#include "WriteAheadLog.h"

namespace corvatto {
ClipboardStore::ClipboardStore(QString applicationSupportDirectory, const Preferences& preferences,
                               Clock clock)
    : m_applicationSupportDirectory(std::move(applicationSupportDirectory)), m_preferences(preferences),
      m_clock(std::move(clock)) {
    openDatabase();
}

ClipboardStore::~ClipboardStore() {
    if (m_db != nullptr) {
        finish();
        m_backgroundSearch.reset();
        m_log.reset();
        m_fetchCache.reset();
        sqlite3_close(m_db);
    }
}

QString ClipboardStore::imagesDir() const {
    return m_applicationSupportDirectory.isEmpty()
               ? QString()
               : m_applicationSupportDirectory + QStringLiteral("/Corvatto/images");
}

QString ClipboardStore::thumbnailsDir() const {
    return m_applicationSupportDirectory.isEmpty()
               ? QString()
               : m_applicationSupportDirectory + QStringLiteral("/Corvatto/thumbnails");
}

void ClipboardStore::finish() {
    do {
        m_writing.finish();
        if (m_log) {
            m_log->finish();
        }
    } while (m_writing.isBusy() || (m_log && m_log->isBusy()));
}

Clearing ClipboardStore::clearing() const {
    return {m_applicationSupportDirectory + QStringLiteral("/Corvatto/clearing"),
            {imagesDir(), thumbnailsDir()}};
}

void ClipboardStore::deleteAll() {
    if (m_db == nullptr) {
        return;
    }
    // An image that is copied from now on is written to files behind the clearing, by the one thread for
    // that, if the clearing goes there at once.
    m_writing.finish();
    m_writing.add([this] { clear(); });
}

void ClipboardStore::clear() {
    if (m_backgroundSearch) {
        m_backgroundSearch->stop(); // the log cannot be emptied while somebody reads
    }
    const auto cleared = [this](const std::optional<QString>& error) {
        m_isClearing = false;
        m_retention->forgetCount();
        m_retention->resume();
        if (error) {
            printLine(*error);
        }
    };
    m_retention->pause();
    m_isClearing = true;
    if (canWorkBeside()) {
        const auto work = [database = m_database, clearing = clearing()] {
            const WorkerConnection connection(database);
            const auto error = clearing.run(connection);
            beginLog(connection);
            return error;
        };
        m_writing.goOnBeside(work, cleared);
    } else {
        cleared(clearing().run(m_db));
    }
}

qint64 ClipboardStore::now() const {
    return std::chrono::duration_cast<std::chrono::seconds>(m_clock().time_since_epoch()).count();
}

} // namespace corvatto
