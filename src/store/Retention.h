// Removes what exceeds the user's retention limits: the rows first, then, when that is on the disk, the files
// of the images among them; then the space in the database's file.
//
// A limit that was just lowered may take a million entries. They are removed in slices from the event loop,
// the oldest first, each slice as large as a few milliseconds allow, and isDue() tells which entries still
// wait for theirs. Each slice leaves a valid history; whatever is left when the program ends is due again at
// the next recording. Private to this room.
#pragma once

#include "settings/Preferences.h"
#include "store/ClipboardItem.h"

#include <QList>
#include <QTimer>

#include <memory>
#include <optional>

struct sqlite3;

namespace corvatto {

// A failure prints one line and ends the removal until the next recording. Main thread.
class Retention {
public:
    // Both outlive the retention.
    Retention(sqlite3* db, const Preferences& preferences);

    // Reads the limits, which apply at `now`, in seconds since 1970, and removes the first slice.
    void apply(qint64 now);

    // Between the two, which nest, no slice is removed by itself: a worker writes.
    void pause();
    void resume();

    // Commits are not on the disk when they are done, but when removalsSynced() says so.
    void waitForSyncs() { m_waitsForSyncs = true; }
    // How many images have been removed up to now.
    qint64 removals() const { return m_removals; }
    // That the first `count` of these removals are on the disk.
    void removalsSynced(qint64 count);

    // While the result lives, which the retention outlives, no file is removed.
    std::shared_ptr<void> keepFiles();

    // Whether the entry exceeds a limit and is going to be removed.
    bool isDue(const ClipboardItem& item) const;

    // The number of rows is kept, because counting a million at each copy takes milliseconds. Whoever changes
    // it says by how much, or that it is to be counted again.
    void rowInserted();
    void forgetCount();

private:
    struct Counted {
        qint64 rows;
        qint64 foreignChanges; // other connections' changes that are counted
    };
    // A place in the order of removal. The entries before it are the older ones.
    struct Place {
        qint64 time, id;
        auto operator<=>(const Place&) const = default;
    };

    struct RemovedImage {
        QString hash, file, thumbnail;
    };

    void removeSlice();
    void scheduleSlice();
    bool cleanupByDays();
    bool cleanupByCount();
    bool freePages();
    void removeRows(const char* selectImagesSql, const char* deleteSql, qint64 parameter,
                    QStringView operation);
    void removeFiles();
    bool hasEntry(const QString& hash) const;
    std::optional<qint64> countRows();
    std::optional<Place> oldestToKeep();

    sqlite3* m_db;
    const Preferences& m_preferences;
    std::optional<qint64> m_cutOff;      // what was copied before is removed; seconds since 1970
    std::optional<qint64> m_itemLimit;   // how many entries are kept
    std::optional<Place> m_oldestKept;   // absent when nothing waits for its removal
    std::optional<Counted> m_counted;    // absent when the rows have to be counted
    qint64 m_sliceSize;                  // rows to remove, or pages to free
    qint64 m_removed = 0;                // rows of the last deletion
    QList<RemovedImage> m_removedImages; // whose files are still there
    qint64 m_removals = 0, m_syncedRemovals = 0;
    int m_keepers = 0; // of files
    bool m_waitsForSyncs = false;
    QTimer m_nextSlice;
    int m_pauses = 0;
    bool m_isSliceDue = false; // when the pauses are over
};

} // namespace corvatto
