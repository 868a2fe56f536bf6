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
    const QString text = QStringLiteral("\uFEFF  it's \"100%\"\0 \U0001F600; -- ");
    wait(999ms); // a fraction of a second is cut off, not rounded
    store->insertOrUpdate(text, QStringLiteral("Editor"));
    wait(60s);
    store->insertOrUpdate(text, {});
    EXPECT_EQ(sql("SELECT id, content_type, source_app, thumbnail_path, copy_count, first_copied_at,"
                  " last_copied_at FROM clipboard_items"),
              texts({"1|text||NULL|2|1700000000|1700000060"}));
    const ClipboardItem item = store->fetchRecent(std::nullopt, 1).value(0);
    EXPECT_EQ(item.content.load(), text);
    EXPECT_EQ(item.copyCount, 2);
    EXPECT_EQ(item.thumbnailPath, std::optional(QString())) << "NULL reads as present and empty";
    EXPECT_EQ(item.lastCopiedAt, QDateTime::fromSecsSinceEpoch(1700000060, Qt::UTC));

    record(QStringLiteral("second"));
    wait(1s);
    store->incrementCopyCount(1);
    store->incrementCopyCount(99);
    EXPECT_EQ(contents(), QStringList({text, QStringLiteral("second")}));
    EXPECT_EQ(sql("SELECT copy_count, source_app FROM clipboard_items"), texts({"3|", "1|Editor"}));
}

TEST_F(Recording, KeepsImagesAndFilesAsTheirKinds) {
    store->insertOrUpdateImage(QStringLiteral("/i/a.png"), QStringLiteral("/t/a.png"), QStringLiteral("hash"),
                               QStringLiteral("Image 2×1"), QStringLiteral("Camera"));
    wait(1s);
    store->insertOrUpdateImage(QStringLiteral("/other.png"), QStringLiteral("/other.png"),
                               QStringLiteral("hash"), QStringLiteral("Other"), QStringLiteral("Viewer"));
    const QStringList paths = texts({"/home/a/报告 100%.tar.gz", "/b c/", "/"});
    store->insertOrUpdateFile(paths, QStringLiteral("Files"));
    store->insertOrUpdateFile({paths[1], paths[0], paths[2]}, {}); // another order is another entry
    store->insertOrUpdateFile({paths[1]}, {});
    store->insertOrUpdateFile({paths[2]}, {});
    store->insertOrUpdateFile({}, QStringLiteral("Files"));
    EXPECT_EQ(sql("SELECT content_type, preview, thumbnail_path, source_app, copy_count,"
                  " last_copied_at - first_copied_at FROM clipboard_items ORDER BY id"),
              texts({"image|Image 2×1|/t/a.png|Viewer|2|1", "file|报告 100%.tar.gz + 2 more|NULL|Files|1|0",
                     "file|b c + 2 more|NULL||1|0", "file|b c|NULL||1|0", "file|/|NULL||1|0"}));
    EXPECT_EQ(sql("SELECT content, content_hash FROM clipboard_items WHERE id < 3"),
              QStringList({QStringLiteral("/i/a.png|hash"),
                           paths.join(u'\n') + u'|' + sha256(QStringLiteral("file|") + paths.join(u'\n'))}));
    // A text that spells out what is hashed for a file entry has that entry's identity.
    store->insertOrUpdate(QStringLiteral("file|/"), {});
    EXPECT_EQ(sql("SELECT COUNT(*) FROM clipboard_items"), texts({"5"}));
}

TEST_F(Recording, PreviewsOneLineOf120Characters) {
    EXPECT_EQ(previewOf(QStringLiteral("a\r\nb\n\rc\td ")), u"a  b  c\td ");
    EXPECT_EQ(previewOf(QString(121, u'x')), QString(120, u'x'));
    // Line ends count after their replacement, so a pair of them counts twice.
    EXPECT_EQ(previewOf(QStringLiteral("\r\n").repeated(100)), QString(120, u' '));
    // A family is one character of eleven code units; the first window is too short for 120 of them.
    const QString family = QStringLiteral("\U0001F468\u200D\U0001F469\u200D\U0001F467\u200D\U0001F466");
    EXPECT_EQ(previewOf(family.repeated(119) + QStringLiteral("e\u0301zz")),
              family.repeated(119) + QStringLiteral("e\u0301"));
    // An emoji stays whole behind any script.
    EXPECT_EQ(previewOf(QStringLiteral("हिन्दी😀").repeated(41)), QStringLiteral("हिन्दी😀").repeated(40));
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

} // namespace
} // namespace corvatto
