// A store on a real file in a directory of its own, with a clock that the test sets and a second connection
// to look at the file with.
#pragma once

#include "settings/SettingsKeys.h"
#include "store/ClipboardStore.h"
#include "support/CapturedOutput.h"
#include "support/FakeUserDefaults.h"
#include "support/Printing.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>
#include <sqlite3.h>

namespace corvatto::test {

class StoreTest : public ::testing::Test {
public:
    QTemporaryDir home;
    FakeUserDefaults defaults;
    Preferences preferences{defaults};
    std::chrono::milliseconds time = std::chrono::seconds(1'700'000'000); // since 1970, the store's clock
    std::unique_ptr<ClipboardStore> store;

    QString path(const char* relative) const { return home.path() + u'/' + QString::fromUtf8(relative); }

    void open() { openAt(home.path()); }
    void openAt(const QString& directory) {
        store.reset(); // SQLite locks: the old connection goes first
        store = std::make_unique<ClipboardStore>(
            directory, preferences, [this] { return std::chrono::system_clock::time_point(time); });
        store->finish();
    }
    void wait(std::chrono::milliseconds duration) { time += duration; }

    // Runs SQL on a connection of its own. A row's columns are joined with "|", NULL is "NULL".
    QStringList sql(const char* statement) const { return sql(statement, path("Corvatto/corvatto.sqlite3")); }
    static QStringList sql(const char* statement, const QString& path) {
        QStringList rows;
        sqlite3* db = nullptr;
        sqlite3_open(path.toUtf8().constData(), &db);
        const auto append = [](void* result, int count, char** values, char**) {
            QStringList columns;
            for (int column = 0; column < count; ++column) {
                columns << QString::fromUtf8(values[column] == nullptr ? "NULL" : values[column]);
            }
            static_cast<QStringList*>(result)->append(columns.join(u'|'));
            return 0;
        };
        EXPECT_EQ(sqlite3_exec(db, statement, append, &rows, nullptr), SQLITE_OK)
            << statement << ": " << sqlite3_errmsg(db);
        sqlite3_close(db);
        return rows;
    }

    ClipboardItem newest() const { return store->fetchRecent(std::nullopt, 1).value(0); }
    QStringList contents(const std::optional<QString>& query = std::nullopt, int limit = 100) const {
        QStringList result;
        for (const ClipboardItem& item : store->fetchRecent(query, limit)) {
            result << *item.content.load();
        }
        return result;
    }

    // Record a second after the last recording, and wait until it is stored.
    void record(const QString& text) {
        wait(std::chrono::seconds(1));
        store->insertOrUpdate(text, u"Editor"_qs);
        store->finish();
    }
    void clear() {
        store->deleteAll();
        store->finish();
    }
    void recordImage(const QString& name) {
        wait(std::chrono::seconds(1));
        for (const QString& file : {imageFile(name), thumbnailFile(name)}) {
            ASSERT_TRUE(QFile(file).open(QIODevice::WriteOnly)) << file.toStdString();
        }
        store->insertOrUpdateImage(imageFile(name), thumbnailFile(name), name, {}, {});
        store->finish();
    }
    QString imageFile(const QString& name) const { return store->imagesDir() + u'/' + name; }
    QString thumbnailFile(const QString& name) const { return store->thumbnailsDir() + u'/' + name; }

    void limitCount(qint64 limit) { defaults.setInteger(SettingsKeys::maxItemCount, limit); }
    void limitDays(qint64 limit) { defaults.setInteger(SettingsKeys::maxRetentionDays, limit); }
};

inline QStringList texts(std::initializer_list<const char*> values) {
    QStringList list;
    for (const char* value : values) {
        list << QString::fromUtf8(value);
    }
    return list;
}

} // namespace corvatto::test
