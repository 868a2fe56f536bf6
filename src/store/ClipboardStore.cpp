// The connection's life and the clearing. How the tables come about, how rows are written, listed and
// searched, and how they expire is in the files beside this one.
#include "store/ClipboardStore.h"

#include "base/Diagnostics.h"
#include "base/FileSystem.h"

#include "ContentReader.h"
#include "FetchCache.h"
#include "SqliteStatement.h"

namespace corvatto {

ClipboardStore::ClipboardStore(QString applicationSupportDirectory, const Preferences& preferences,
                               Clock clock)
    : m_applicationSupportDirectory(std::move(applicationSupportDirectory)), m_preferences(preferences),
      m_clock(std::move(clock)) {
    openDatabase();
}

ClipboardStore::~ClipboardStore() {
    if (m_db != nullptr) {
        m_contentReader.reset(); // items that outlive the store read nothing
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

void ClipboardStore::deleteAll() {
    if (m_db == nullptr) {
        return;
    }
    if (const auto error = executeSql(m_db, "DELETE FROM clipboard_items")) {
        printLine(QStringLiteral("[ClipboardStore] ERROR: deleteAll failed: ") + *error);
        // The entries are still there, and an entry whose image is gone is worse than a file nobody owns.
        return;
    }
    deleteImageDirectories();
}

void ClipboardStore::deleteImageDirectories() const {
    // Nothing is said about a directory that is missing or stays: the entries are gone, which is what was
    // asked for.
    for (const QString& directory : {imagesDir(), thumbnailsDir()}) {
        removeDirectoryTree(directory);
    }
}

qint64 ClipboardStore::now() const {
    return std::chrono::duration_cast<std::chrono::seconds>(m_clock().time_since_epoch()).count();
}

} // namespace corvatto
