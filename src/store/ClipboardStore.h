// The clipboard history: one SQLite database with a row for each distinct content, and the two directories of
// image files that belong to it. Records captures with de-duplication by content hash, lists and searches
// entries, clears them, and removes what exceeds the user's retention limits.
#pragma once

#include "base/OrderedWork.h"
#include "settings/Preferences.h"
#include "store/ClipboardItem.h"

#include <QList>
#include <QString>
#include <QStringList>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>

struct sqlite3;

namespace corvatto {

class BackgroundSearch;
class FetchCache;
class Retention;
class WriteAheadLog;
struct Capture;
struct Clearing;
struct WrittenCapture;

// No operation fails outward: a failure prints one line, and the result is nothing or an empty list. Without
// a connection every operation does nothing. Main thread.
//
// What takes long goes on beside the main thread: the writing of a text of megabytes, and clearing. What is
// written after it then waits for it, in order. What is written is on the disk some milliseconds later: only
// a loss of power at this moment takes it, and nothing else with it.
class ClipboardStore {
public:
    using Clock = std::function<std::chrono::system_clock::time_point()>;

    // Opens the database, creating or upgrading it, in "Corvatto" below `applicationSupportDirectory`: an
    // absolute path, or empty when the system has none. The preferences outlive the store; they are read at
    // each recording.
    ClipboardStore(QString applicationSupportDirectory, const Preferences& preferences,
                   Clock clock = &std::chrono::system_clock::now);
    ~ClipboardStore();
    ClipboardStore(const ClipboardStore&) = delete;
    ClipboardStore& operator=(const ClipboardStore&) = delete;

    // Where the PNG files of image entries and their thumbnails live: absolute paths, whether the directories
    // exist or not. Empty when there is no application-support directory.
    QString imagesDir() const;
    QString thumbnailsDir() const;

    using Recorded = std::function<void()>;

    // Record a capture: as a repeat when an entry with the same hash is stored (its count rises, it moves to
    // the front, it takes the new source application), as a new entry otherwise. Then the retention limits
    // are applied: what exceeds them is not found any more, and is removed at once when it is little, from
    // the event loop when it is much. `recorded` is called then, whether that succeeded or not: at once, or
    // from the event loop where it takes longer.
    void insertOrUpdate(const QByteArray& utf8Text, const QString& sourceApp, Recorded recorded = {});
    void insertOrUpdate(const QString& text, const QString& sourceApp, Recorded recorded = {});
    // The image's files exist already; `hash` is the image's content hash.
    void insertOrUpdateImage(const QString& imagePath, const QString& thumbnailPath, const QString& hash,
                             const QString& preview, const QString& sourceApp, Recorded recorded = {});
    // Absolute paths as base/FilePath.h writes them, in the order of the clipboard. An empty list records
    // nothing.
    void insertOrUpdateFile(const QStringList& paths, const QString& sourceApp, Recorded recorded = {});

    // To be held from before the files of an image are saved until the image is recorded: they may be those
    // of an older entry that is being removed. Null without a history. Not to outlive the store.
    std::shared_ptr<void> keepImageFiles();

    // Counts that the user copied the entry back, which moves it to the front. An unknown id changes nothing.
    void incrementCopyCount(qint64 id);

    // The most recent entries, newest first, at most `limit`. With a query that is not blank, only those that
    // contain it, as typed, in content, preview, source application or type; "%" and "_" in it are wildcards,
    // and only ASCII letters match in either case. Of a long text, the item holds a prefix.
    QList<ClipboardItem> fetchRecent(const std::optional<QString>& searchQuery, int limit);

    struct SearchResult {
        QList<ClipboardItem> items;
        bool isComplete = true; // if not, what is missing comes after these items
    };
    using Found = std::function<void(QList<ClipboardItem>)>;

    // What fetchRecent() finds with the query, but takes some milliseconds at most. What then is incomplete
    // is looked for on a worker, and `found` is called with all of it from the event loop. Ends the search
    // before it. Without a write-ahead log, nobody can read beside the main thread, and it takes as long as
    // it takes.
    SearchResult search(const QString& query, int limit, Found found);

    // How long search() may take at most before the rest is left to the worker.
    void setLongestSearch(std::chrono::milliseconds time) { m_longestSearch = time; }

    // Ends the search that is under way, if any: its `found` is not called any more.
    void cancelSearch();

    // Deletes all entries and both image directories, and leaves nothing of the contents in the database's
    // files. Nothing is found any more at once; the rest takes a second for a large history, and is resumed
    // at the next start by whoever was killed meanwhile. When the entries cannot be deleted their files stay
    // too.
    void deleteAll();

    // Waits until everything above is in the database's files, and on the disk, as the destructor does.
    void finish();

private:
    void openDatabase();
    void createTable();
    void migrateAddSourceApp();
    void migrateAddContentType();
    void migrateAddThumbnailPath();
    void ensureImageDirectories() const;

    bool canWorkBeside() const { return m_backgroundSearch != nullptr; }
    void record(Capture capture, Recorded recorded);
    void captureWritten(const WrittenCapture& written);
    using Writing = std::function<WrittenCapture(sqlite3*)>;
    void write(qsizetype contentSize, const Writing& writing,
               const std::function<void(const WrittenCapture&)>& written);

    Clearing clearing() const;
    void clear();
    SearchResult fetch(const std::optional<QString>& searchQuery, int limit, Found found);
    QList<ClipboardItem> withoutDue(QList<ClipboardItem> items) const;

    qint64 now() const; // whole seconds since 1970-01-01 00:00 UTC, truncated toward zero

    const QString m_applicationSupportDirectory;
    const Preferences& m_preferences;
    const Clock m_clock;
    QByteArray m_database; // path as the system spells it
    sqlite3* m_db = nullptr;
    bool m_isClearing = false;
    OrderedWork m_writing;                                // while a worker writes
    std::unique_ptr<FetchCache> m_fetchCache;             // with the connection
    std::unique_ptr<Retention> m_retention;               // likewise
    std::unique_ptr<WriteAheadLog> m_log;                 // where there is one
    std::chrono::milliseconds m_longestSearch{8};         // half a frame
    std::unique_ptr<BackgroundSearch> m_backgroundSearch; // null without a write-ahead log, with which
    // one may read while another writes
};

} // namespace corvatto
