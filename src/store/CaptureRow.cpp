#include "CaptureRow.h"

#include "store/ContentHash.h"

#include "SqliteStatement.h"

namespace corvatto {
namespace {

constexpr char updateByHashSql[] = "    UPDATE clipboard_items\n"
                                   "       SET copy_count    = copy_count + 1,\n"
                                   "           last_copied_at = ?,\n"
                                   "           source_app     = ?\n"
                                   "     WHERE content_hash   = ?";

constexpr char insertTextSql[] =
    "    INSERT INTO clipboard_items\n"
    "        (content, content_hash, preview, content_type, source_app, copy_count, "
    "first_copied_at, last_copied_at)\n"
    "    VALUES\n"
    "        (?, ?, ?, 'text', ?, 1, ?, ?)";

constexpr char insertFileSql[] =
    "    INSERT INTO clipboard_items\n"
    "        (content, content_hash, preview, content_type, source_app, copy_count, "
    "first_copied_at, last_copied_at)\n"
    "    VALUES\n"
    "        (?, ?, ?, 'file', ?, 1, ?, ?)";

constexpr char insertImageSql[] =
    "    INSERT INTO clipboard_items\n"
    "        (content, content_hash, preview, content_type, thumbnail_path, source_app, "
    "copy_count, first_copied_at, last_copied_at)\n"
    "    VALUES\n"
    "        (?, ?, ?, 'image', ?, ?, 1, ?, ?)";

constexpr char incrementCopyCountSql[] = "    UPDATE clipboard_items\n"
                                         "       SET copy_count    = copy_count + 1,\n"
                                         "           last_copied_at = ?\n"
                                         "     WHERE id = ?";

// Failures are not reported: the insertion that follows fails as well, and reports them.
bool countRepeat(sqlite3* db, const Capture& capture) {
    SqliteStatement update(db, updateByHashSql);
    if (!update.isPrepared()) {
        return false;
    }
    update.bindInt64(1, capture.time);
    update.bindText(2, capture.sourceApp);
    update.bindText(3, capture.hash);
    return update.step() == SQLITE_DONE && sqlite3_changes(db) >= 1;
}

WrittenCapture insert(sqlite3* db, const Capture& capture) {
    using Result = WrittenCapture::Result;
    SqliteStatement insertion(db, capture.kind->insertSql);
    if (!insertion.isPrepared()) {
        return {Result::notPrepared, capture.kind->prepareMessage.toString() + lastSqliteError(db)};
    }
    int parameter = 0;
    insertion.bindUtf8InPlace(++parameter, capture.content);
    insertion.bindText(++parameter, capture.hash);
    insertion.bindText(++parameter, capture.preview);
    if (capture.kind == &CaptureKind::image) {
        insertion.bindText(++parameter, capture.thumbnailPath);
    }
    insertion.bindText(++parameter, capture.sourceApp);
    insertion.bindInt64(++parameter, capture.time);
    insertion.bindInt64(++parameter, capture.time);
    if (insertion.step() != SQLITE_DONE) {
        return {Result::notInserted, capture.kind->insertMessage.toString() + lastSqliteError(db)};
    }
    return {Result::inserted, {}};
}

} // namespace

const CaptureKind CaptureKind::text{insertTextSql, u"[ClipboardStore] ERROR: Prepare insert failed: ",
                                    u"[ClipboardStore] ERROR: Insert failed: "};
const CaptureKind CaptureKind::image{insertImageSql, u"[ClipboardStore] ERROR: Prepare image insert failed: ",
                                     u"[ClipboardStore] ERROR: Image insert failed: "};
const CaptureKind CaptureKind::file{insertFileSql, u"[ClipboardStore] ERROR: Prepare file insert failed: ",
                                    u"[ClipboardStore] ERROR: File insert failed: "};

WrittenCapture write(sqlite3* db, Capture capture) {
    if (capture.hash.isEmpty()) {
        capture.hash = sha256Hex(capture.content);
    }
    return countRepeat(db, capture) ? WrittenCapture{WrittenCapture::Result::repeated, {}}
                                    : insert(db, capture);
}

WrittenCapture countCopyBack(sqlite3* db, qint64 id, qint64 time) {
    SqliteStatement update(db, incrementCopyCountSql);
    if (!update.isPrepared()) {
        return {WrittenCapture::Result::notPrepared, {}};
    }
    update.bindInt64(1, time);
    update.bindInt64(2, id);
    if (update.step() != SQLITE_DONE) {
        return {WrittenCapture::Result::repeated,
                QStringLiteral("[ClipboardStore] ERROR: incrementCopyCount failed: ") + lastSqliteError(db)};
    }
    return {WrittenCapture::Result::repeated, {}};
}

} // namespace corvatto
