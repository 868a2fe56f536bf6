#include "StoreTest.h"

#include <QDir>

namespace corvatto {
namespace {

using Opening = test::StoreTest;
using test::CapturedOutput;

// A run without a history, or with half of one: every operation comes back, and says what is listed.
TEST_F(Opening, SaysWhatIsInTheWayAndLeavesItAlone) {
    const QByteArray diary = QByteArray("Dear diary, ").repeated(1000);
    struct Case {
        const char* inTheWay;
        QByteArray opening, operations;
    };
    for (const Case& each : {
             Case{"Corvatto",
                  "[ClipboardStore] ERROR: Failed to create database directory: Not a directory\n", ""},
             Case{"Corvatto/corvatto.sqlite3",
                  "[ClipboardStore] ERROR: Failed to create table: file is not a database\n"
                  "[ClipboardStore] Migration add source_app: file is not a database\n"
                  "[ClipboardStore] Migration add content_type: file is not a database\n"
                  "[ClipboardStore] Migration add thumbnail_path: file is not a database\n",
                  "[ClipboardStore] ERROR: Prepare insert failed: file is not a database\n"
                  "[ClipboardStore] ERROR: Prepare file insert failed: file is not a database\n"
                  "[ClipboardStore] ERROR: Prepare image insert failed: file is not a database\n"
                  "[ClipboardStore] ERROR: Query failed: file is not a database\n"
                  "[ClipboardStore] ERROR: deleteAll failed: file is not a database\n"},
             Case{"Corvatto/images",
                  "[ClipboardStore] ERROR: Cannot create " + path("Corvatto/images").toUtf8() +
                      ": Not a directory (code 20, path " + path("Corvatto/images").toUtf8() + ")\n",
                  ""},
             Case{nullptr, "[ClipboardStore] ERROR: Cannot find Application Support directory\n", ""},
         }) {
        SCOPED_TRACE(::testing::PrintToString(each.inTheWay));
        QDir(path("Corvatto")).removeRecursively();
        QFile::remove(path("Corvatto"));
        QFile file(path(each.inTheWay));
        QDir().mkpath(QFileInfo(file).path());
        const bool isFile = each.inTheWay != nullptr;
        ASSERT_TRUE(!isFile || (file.open(QIODevice::WriteOnly) && file.write(diary) > 0));
        file.close();
        CapturedOutput output;
        isFile ? open() : openAt({});
        EXPECT_EQ(output.text(), each.opening);
        store->insertOrUpdate(QStringLiteral("text"), {});
        store->insertOrUpdateFile({QStringLiteral("/file")}, {});
        store->insertOrUpdateImage(QStringLiteral("/i.png"), {}, QStringLiteral("hash"), {}, {});
        store->incrementCopyCount(1);
        const bool works = QByteArray(each.inTheWay) == "Corvatto/images";
        EXPECT_EQ(contents().size(), works ? 3 : 0);
        if (!works) {
            store->deleteAll();
        }
        EXPECT_EQ(output.text(), each.opening + each.operations);
        store.reset();
        EXPECT_TRUE(!isFile || (file.open(QIODevice::ReadOnly) && file.readAll() == diary));
    }
}

} // namespace
} // namespace corvatto
