#include "StoreTest.h"

#include "store/ContentHash.h"

namespace corvatto {
namespace {

using test::texts;
using namespace std::chrono_literals;

class Recording : public test::StoreTest {
protected:
    void SetUp() override { open(); }
    QString previewOf(const QString& text) {
        record(text);
        return store->fetchRecent(std::nullopt, 1).value(0).preview;
    }
};

TEST_F(Recording, CountsARepeatedTextOnItsOneEntry) {
    wait(999ms); // a fraction of a second is cut off, not rounded
    store->insertOrUpdate(QStringLiteral("  word "), QStringLiteral("Editor"));
    wait(60s);
    store->insertOrUpdate(QStringLiteral("  word "), {});
    const QString hash = sha256(u"  word ");
    EXPECT_EQ(
        sql("SELECT * FROM clipboard_items"),
        QStringList(QStringLiteral("1|  word |%1|  word |text||NULL|2|1700000000|1700000060").arg(hash)));
    const ClipboardItem item = store->fetchRecent(std::nullopt, 1).value(0);
    EXPECT_EQ(item.contentHash, hash);
    EXPECT_EQ(item.copyCount, 2);
    EXPECT_EQ(item.thumbnailPath, std::optional(QString())) << "NULL reads as present and empty";
    EXPECT_EQ(item.lastCopiedAt, QDateTime::fromSecsSinceEpoch(1700000060, Qt::UTC));
}

TEST_F(Recording, KeepsImagesAndFilesAsTheirKinds) {
    store->insertOrUpdateImage(QStringLiteral("/i/a.png"), QStringLiteral("/t/a.png"), QStringLiteral("hash"),
                               QStringLiteral("Image 2×1"), QStringLiteral("Camera"));
    wait(1s);
    store->insertOrUpdateImage(QStringLiteral("/other.png"), QStringLiteral("/other.png"),
                               QStringLiteral("hash"), QStringLiteral("Other"), QStringLiteral("Viewer"));
    const QStringList paths = texts({"/Users/a/Desktop/report.pdf", "/b c", "/d%20"});
    store->insertOrUpdateFile(paths, QStringLiteral("Files"));
    store->insertOrUpdateFile({paths[0]}, {});
    store->insertOrUpdateFile({paths[1], paths[0], paths[2]}, {}); // another order is another entry
    store->insertOrUpdateFile({}, QStringLiteral("Files"));
    EXPECT_EQ(
        sql("SELECT content_type, content, content_hash, preview, thumbnail_path, source_app, copy_count,"
            " last_copied_at - first_copied_at FROM clipboard_items ORDER BY id"),
        (QStringList{
            QStringLiteral("image|/i/a.png|hash|Image 2×1|/t/a.png|Viewer|2|1"),
            QStringLiteral("file|%1|%2|report.pdf + 2 more|NULL|Files|1|0")
                .arg(paths.join(u'\n'), sha256(QStringLiteral("file|") + paths.join(u'\n'))),
            QStringLiteral("file|%1|%2|report.pdf|NULL||1|0")
                .arg(paths[0], sha256(QStringLiteral("file|") + paths[0])),
            QStringLiteral("file|/b c\n%1\n/d%20|%2|b c + 2 more|NULL||1|0")
                .arg(paths[0], sha256(QStringLiteral("file|/b c\n%1\n/d%20").arg(paths[0]))),
        }));
    // A text that spells out what is hashed for a file entry has that entry's identity.
    store->insertOrUpdate(QStringLiteral("file|") + paths[0], QStringLiteral("Editor"));
    EXPECT_EQ(sql("SELECT content_type, copy_count, source_app FROM clipboard_items WHERE id = 3"),
              texts({"file|2|Editor"}));
    EXPECT_EQ(sql("SELECT COUNT(*) FROM clipboard_items"), texts({"4"}));
}

TEST_F(Recording, NamesAFileByItsLastPathComponent) {
    const auto preview = [this](const char* path) {
        wait(1s);
        store->insertOrUpdateFile({QString::fromUtf8(path)}, {});
        return store->fetchRecent(std::nullopt, 1).value(0).preview;
    };
    EXPECT_EQ(preview("/home/a/报告 100%.tar.gz"), u"报告 100%.tar.gz");
    EXPECT_EQ(preview("/home/a/folder/"), u"folder");
    EXPECT_EQ(preview("/"), u"/");
}

TEST_F(Recording, PreviewsOneLineOf120Characters) {
    EXPECT_EQ(previewOf(QStringLiteral("a\r\nb\n\rc\td ")), u"a  b  c\td ");
    EXPECT_EQ(previewOf(QStringLiteral("\n\r\n")), u"   ");
    EXPECT_EQ(previewOf(QString(120, u'x')), QString(120, u'x'));
    EXPECT_EQ(previewOf(QString(121, u'x')), QString(120, u'x'));
    // Line ends count after their replacement, so a pair of them counts twice.
    EXPECT_EQ(previewOf(QStringLiteral("\r\n").repeated(100)), QString(120, u' '));
    // A family is one character of eleven code units; the first window is too short for 120 of them.
    const QString family = QStringLiteral("\U0001F468\u200D\U0001F469\u200D\U0001F467\u200D\U0001F466");
    EXPECT_EQ(previewOf(family.repeated(119) + QStringLiteral("e\u0301zz")),
              family.repeated(119) + QStringLiteral("e\u0301"));
    // Every cut of the text into windows: whatever precedes them, flags stay whole.
    const QString flag = QStringLiteral("\U0001F1E8\U0001F1F3");
    for (int offset = 0; offset < 4; ++offset) {
        const QString marks = u'e' + QString(955 + offset, QChar(0x301));
        EXPECT_EQ(previewOf(marks + flag.repeated(130)), marks + flag.repeated(119));
    }
    // Equal previews are two entries all the same.
    record(QStringLiteral("end\n"));
    record(QStringLiteral("end "));
    EXPECT_EQ(sql("SELECT COUNT(*) FROM clipboard_items WHERE preview = 'end '"), texts({"2"}));
}

TEST_F(Recording, GivesBackEveryTextWhole) {
    const QStringList all{
        QStringLiteral("before\0after\0"),
        QStringLiteral("\uFEFF\uFEFFbyte-order marks"),
        QStringLiteral("它's \"100%\" \U0001F600; DROP TABLE clipboard_items; --\\"),
        QString(3'000'000, QChar(0x6587)) + QStringLiteral("the end"),
    };
    for (const QString& text : all) {
        record(text);
        ASSERT_EQ(contents(std::nullopt, 1), QStringList(text));
        record(text);
    }
    EXPECT_EQ(store->fetchRecent(std::nullopt, 100).size(), all.size());
}

TEST_F(Recording, CopyBackMovesAnEntryToTheFrontAndKeepsItsSource) {
    record(QStringLiteral("first"));
    record(QStringLiteral("second"));
    wait(1s);
    store->incrementCopyCount(1);
    store->incrementCopyCount(99);
    EXPECT_EQ(
        sql("SELECT content, copy_count, source_app, last_copied_at - first_copied_at FROM clipboard_items"),
        texts({"first|2|Editor|2", "second|1|Editor|0"}));
    EXPECT_EQ(contents(), texts({"first", "second"}));
}

TEST_F(Recording, ReportsWhatTheDatabaseRefuses) {
    record(QStringLiteral("known"));
    sql("CREATE TRIGGER no_update BEFORE UPDATE ON clipboard_items BEGIN SELECT RAISE(ABORT, 'no update'); "
        "END;"
        "CREATE TRIGGER no_insert BEFORE INSERT ON clipboard_items WHEN NEW.content <> 'known'"
        " BEGIN SELECT RAISE(ABORT, 'no insert'); END");
    test::CapturedOutput output;
    record(QStringLiteral("known")); // the silent failure of the update shows in the insertion
    record(QStringLiteral("new"));
    store->insertOrUpdateFile({QStringLiteral("/f")}, {});
    store->insertOrUpdateImage({}, {}, {}, {}, {});
    store->incrementCopyCount(1);
    EXPECT_EQ(
        output.text(),
        "[ClipboardStore] ERROR: Insert failed: UNIQUE constraint failed: clipboard_items.content_hash\n"
        "[ClipboardStore] ERROR: Insert failed: no insert\n"
        "[ClipboardStore] ERROR: File insert failed: no insert\n"
        "[ClipboardStore] ERROR: Image insert failed: no insert\n"
        "[ClipboardStore] ERROR: incrementCopyCount failed: no update\n");
    EXPECT_EQ(contents(), texts({"known"}));
}

} // namespace
} // namespace corvatto
