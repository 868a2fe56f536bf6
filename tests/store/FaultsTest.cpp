// Each operation of the store with each of its calls to the disk failing in turn, once and for good. Whatever
// fails: the database is whole, each entry is whole or absent, an image has its files, what was acknowledged
// stays through the end of the process and of the power, and the store works again when the fault has gone
// (after a failed opening: at the next start).
#include "StoreTest.h"

#include "FaultyVfs.h"
#include "store/ContentHash.h"

#include <QDir>
#include <QFileInfo>
#include <QSet>

#include <filesystem>

namespace corvatto {
namespace {

using namespace std::chrono_literals;

class Faults;

using Entries = QList<ClipboardItem>;

struct Operation {
    const char* name;
    void (*prepare)(Faults&); // without faults, on a history of an image and a text
    void (*run)(Faults&);
    int entries;                // that there are when it has happened,
    const char* content;        // and the end of one of them,
    qint64 copies = 1;          // and how often that was copied
    const char* line = nullptr; // says that it has not happened; null when nothing does
    const char* removes = "";   // the types that it may remove, all or none
    int step = 1;               // 1 to let each call fail
    bool isOpening = false;
};

class Faults : public test::StoreTest, public ::testing::WithParamInterface<Operation> {
public:
    test::FaultyVfs vfs;
    Entries before; // those of the prepared history, the same each time

    void TearDown() override { store.reset(); } // its files need the VFS

    // Leaves the files as they are when the process is killed.
    void crash() {
        const QString copy = filesAfterKill("killed");
        store.reset();
        QDir(path("Corvatto")).removeRecursively();
        QDir().rename(copy + u"/Corvatto"_qs, path("Corvatto"));
    }
    void removeEverything() {
        store.reset();
        QDir(path("Corvatto")).removeRecursively();
        vfs.clearDisk();
    }
    void create(const QByteArray& statements) {
        removeEverything();
        QDir().mkpath(path("Corvatto"));
        sql(statements.constData());
    }
    void prepare() {
        removeEverything();
        defaults.stored.clear();
        open();
        recordImage(u"s3cret image"_qs);
        record(u"s3cret text"_qs);
        GetParam().prepare(*this);
        finish();
    }
    // All that happens beside the event loop, too.
    void finish() const {
        if (store) {
            store->finish();
        }
    }

    QString emptyCopy(const char* name) const {
        QDir(path(name)).removeRecursively();
        QDir().mkpath(path(name) + u"/Corvatto"_qs);
        return path(name);
    }
    QString filesAfterKill(const char* name) const {
        const QString directory = emptyCopy(name);
        std::error_code nothingThere;
        std::filesystem::copy(path("Corvatto").toStdString(), directory.toStdString() + "/Corvatto",
                              std::filesystem::copy_options::recursive, nothingThere);
        return directory;
    }
    QString filesAfterLossOfPower() const {
        const QString directory = emptyCopy("unpowered");
        const auto disk = vfs.disk();
        for (auto file = disk.begin(); file != disk.end(); ++file) {
            if (file.key().startsWith(path("Corvatto/"))) { // the others are copies such as this one
                QFile copy(directory + file.key().mid(home.path().size()));
                EXPECT_TRUE(copy.open(QIODevice::WriteOnly) && copy.write(*file) == file->size());
            }
        }
        return directory;
    }
    // The entries that the next run would find there.
    Entries entriesIn(const QString& directory) {
        EXPECT_EQ(sql("PRAGMA integrity_check", directory + u"/Corvatto/corvatto.sqlite3"_qs),
                  test::texts({"ok"}));
        test::CapturedOutput output;
        ClipboardStore next(directory, preferences);
        Entries entries = next.fetchRecent(std::nullopt, 1000);
        for (ClipboardItem& entry : entries) {
            entry.content = *entry.content.load(); // while there is somebody to read it
        }
        EXPECT_EQ(output.text(), "");
        return entries;
    }

    static bool isWhole(const ClipboardItem& item) {
        if (item.contentType == u"image") {
            return QFileInfo::exists(item.content.prefix()) && QFileInfo::exists(*item.thumbnailPath);
        }
        const QString prefix = item.contentType == u"file" ? u"file|"_qs : QString();
        return item.contentHash == sha256(prefix + *item.content.load()) && !item.preview.isEmpty();
    }
    static bool hasHappened(const Entries& entries) {
        return entries.size() == GetParam().entries &&
               (entries.isEmpty() || std::any_of(entries.begin(), entries.end(), [](const auto& entry) {
                    return entry.content.load()->endsWith(QLatin1String(GetParam().content)) &&
                           entry.copyCount == GetParam().copies;
                }));
    }

    // What was there before is there, but for what may be removed, all or none; and what is there is whole.
    void expectHistory(const char* when, const Entries& entries, bool mustHaveHappened) {
        SCOPED_TRACE(when);
        QSet<QString> hashes;
        for (const ClipboardItem& entry : entries) {
            hashes << entry.contentHash;
            EXPECT_TRUE(isWhole(entry)) << entry.contentType.toStdString();
        }
        QSet<bool> removed;
        for (const ClipboardItem& entry : before) {
            const bool isThere = hashes.contains(entry.contentHash);
            if (QByteArray(GetParam().removes).contains(entry.contentType.toUtf8())) {
                removed << !isThere;
            } else {
                EXPECT_TRUE(isThere) << "lost: " << entry.contentType.toStdString();
            }
        }
        EXPECT_LE(removed.size(), 1) << "half removed";
        EXPECT_TRUE(!mustHaveHappened || hasHappened(entries)) << "not done, and nothing said";
    }

    // Lets the n-th call fail. False when there was no such call.
    bool runWithFault(test::FaultyVfs::Fault fault, int n, bool persistently) {
        prepare();
        if (n == 1) {
            before = entriesIn(filesAfterKill("before"));
        }
        test::CapturedOutput output;
        vfs.arm(fault, n, persistently);
        GetParam().run(*this);
        finish();
        const bool failed = vfs.disarm();

        const QByteArray said = output.text();
        EXPECT_FALSE(said.contains("s3cret")) << said.toStdString();
        EXPECT_EQ(said.count('\n'), said.count("[ClipboardStore] ")) << said.toStdString();
        const bool mustHaveHappened =
            !failed || (GetParam().line != nullptr && !said.contains(GetParam().line) &&
                        !said.contains("Failed to sync database: "));
        expectHistory("after a kill", entriesIn(filesAfterKill("killed")), mustHaveHappened);
        expectHistory("after a loss of power", entriesIn(filesAfterLossOfPower()), mustHaveHappened);
        if (!store || GetParam().isOpening) {
            open(); // a history that could not be opened is there again at the next start
        }
        expectHistory("in this process", store->fetchRecent(std::nullopt, 1000), mustHaveHappened);
        defaults.stored.clear();
        record(u"s3cret later"_qs);
        EXPECT_EQ(contents(std::nullopt, 1), test::texts({"s3cret later"}));
        EXPECT_EQ(output.text(), said) << "the fault has gone, and the store does not work";
        return failed;
    }
};

TEST_P(Faults, LoseNothing) {
    using Fault = test::FaultyVfs::Fault;
    for (const Fault fault : {Fault::ioError, Fault::diskFull}) {
        for (const bool persistently : {false, true}) {
            for (int n = 1;; n += GetParam().step) {
                SCOPED_TRACE(::testing::Message() << (fault == Fault::ioError ? "I/O error" : "disk full")
                                                  << (persistently ? " from call " : " at call ") << n);
                if (!runWithFault(fault, n, persistently)) {
                    EXPECT_TRUE(n > 1 || fault == Fault::diskFull) << "no call fails";
                    break;
                }
                if (HasFailure()) {
                    return; // one is enough to read
                }
            }
        }
    }
}

void createOldSchema(Faults& t) {
    const QByteArray hash = sha256(u"s3cret old"_qs).toLatin1();
    t.create("CREATE TABLE clipboard_items (id INTEGER PRIMARY KEY AUTOINCREMENT, content TEXT NOT NULL,"
             " content_hash TEXT NOT NULL UNIQUE, preview TEXT NOT NULL,"
             " copy_count INTEGER NOT NULL DEFAULT 1, first_copied_at INTEGER NOT NULL,"
             " last_copied_at INTEGER NOT NULL);"
             "INSERT INTO clipboard_items VALUES (7, 's3cret old', '" +
             hash + "', 'old', 1, 9, 9)");
}
// With those, a text of some hundred kilobytes fills the log so that it is written back at once.
void createSmallPages(Faults& t) {
    t.create("PRAGMA page_size = 512; PRAGMA user_version = 1");
    t.open();
    t.record(u"s3cret text"_qs);
}
void prepareToRemoveByDays(Faults& t) {
    t.open(); // nothing is in memory, so reads count as well
    t.limitDays(1);
    t.wait(48h);
}
void asItIs(Faults&) {}
void close(Faults& t) {
    t.store.reset();
}
void open(Faults& t) {
    t.open();
}
template <const auto& text>
void recordText(Faults& t) {
    t.record(QString::fromLatin1(text));
}
constexpr char newText[] = "s3cret new", storedText[] = "s3cret text";

constexpr auto noInsertion = "nsert failed: ";

const Operation operations[] = {
    {"OpeningNew", [](Faults& t) { t.removeEverything(); }, open, 0, "", 1, nullptr, "", 1, true},
    {"OpeningAgain", close, open, 2, "text", 1, nullptr, "", 1, true},
    {"OpeningAfterAKill", [](Faults& t) { t.crash(); }, open, 2, "text", 1, nullptr, "", 1, true},
    {"OpeningOldSchema", createOldSchema, open, 1, "old", 1, nullptr, "", 1, true},
    {"Closing", asItIs, close, 2, "text"},
    {"RecordingText", asItIs, recordText<newText>, 3, "new", 1, noInsertion},
    {"RecordingImage", asItIs, [](Faults& t) { t.recordImage(u"s3cret second"_qs); }, 3, "second", 1,
     noInsertion},
    {"RecordingFile", asItIs, [](Faults& t) { t.store->insertOrUpdateFile({u"/s3cret/file"_qs}, {}); }, 3,
     "/file", 1, noInsertion},
    {"RecordingLargeText", createSmallPages,
     [](Faults& t) { t.record(QString(600'000, u'x') + u"s3cret large"_qs); }, 2, "large", 1, noInsertion, "",
     101},
    {"RecordingRepeat", asItIs, recordText<storedText>, 2, "text", 2, noInsertion},
    {"CopyingBack", asItIs, [](Faults& t) { t.store->incrementCopyCount(2); }, 2, "text", 2},
    {"Listing", open, [](Faults& t) { t.contents(); }, 2, "text"},
    {"Searching", open, [](Faults& t) { t.contents(u"s3cret"_qs); }, 2, "text"},
    {"Clearing", open, [](Faults& t) { t.clear(); }, 0, "", 1, "deleteAll failed: ", "image, text"},
    {"RemovingByDays", prepareToRemoveByDays, recordText<newText>, 1, "new", 1, nullptr, "image, text"},
    {"RemovingByCount", [](Faults& t) { t.limitCount(2); }, recordText<newText>, 2, "new", 1, nullptr,
     "image"},
};

INSTANTIATE_TEST_SUITE_P(Store, Faults, ::testing::ValuesIn(operations),
                         [](const auto& test) { return test.param.name; });

} // namespace
} // namespace corvatto
