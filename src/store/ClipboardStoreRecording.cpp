// The writes: captures of each kind, de-duplicated by content hash, and copy-backs.
#include "store/ClipboardStore.h"

#include "base/Diagnostics.h"
#include "base/FilePath.h"
#include "base/Graphemes.h"
#include "store/ContentHash.h"

#include "Retention.h"
#include "SqliteStatement.h"

#include <algorithm>

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

constexpr qsizetype previewLength = 120; // user-perceived characters

// The text on one line, cut to previewLength. Looks at a window of the text that grows until it is large
// enough, because the text may be of any size.
QString makeTextPreview(QStringView text) {
    for (qsizetype window = 8 * previewLength;; window *= 8) {
        // Whether a character ends at a place depends on the next code point, so the window does not cut one.
        const bool cutsPair = window < text.size() && text[window - 1].isHighSurrogate();
        QString line = text.first(std::min(text.size(), cutsPair ? window + 1 : window)).toString();
        std::replace_if(
            line.begin(), line.end(),
            [](QChar character) { return character == u'\n' || character == u'\r'; }, u' ');
        const QStringView preview = graphemePrefix(line, previewLength);
        if (preview.size() < line.size() || line.size() == text.size()) {
            line.truncate(preview.size());
            return line;
        }
        // The window was filled by fewer characters, such as letters with dozens of marks, and may have cut
        // the last of them.
    }
}

QString makeFilePreview(const QStringList& paths) {
    if (paths.isEmpty()) {
        return QStringLiteral("0 files");
    }
    const QString name = displayName(paths.first());
    return paths.size() == 1 ? name : name + QStringLiteral(" + %1 more").arg(paths.size() - 1);
}

} // namespace

// What differs between the kinds of entries: the statement that inserts one, and the messages of failures.
struct ClipboardStore::Kind {
    const char* insertSql;
    QStringView prepareMessage;
    QStringView insertMessage;
};

// The values of one capture. The content is in UTF-8 already, because it can be large and is hashed.
struct ClipboardStore::Capture {
    const Kind& kind;
    const QByteArray content;
    const QString hash;
    const QString preview;
    const QString* thumbnailPath; // null when the kind's statement has no parameter for it
    const QString& sourceApp;
};

void ClipboardStore::insertOrUpdate(const QString& text, const QString& sourceApp) {
    static constexpr Kind kind{insertTextSql, u"[ClipboardStore] ERROR: Prepare insert failed: ",
                               u"[ClipboardStore] ERROR: Insert failed: "};
    if (m_db == nullptr) {
        return;
    }
    const QByteArray content = text.toUtf8();
    record({kind, content, sha256Hex(content), makeTextPreview(text), nullptr, sourceApp});
}

void ClipboardStore::insertOrUpdateImage(const QString& imagePath, const QString& thumbnailPath,
                                         const QString& hash, const QString& preview,
                                         const QString& sourceApp) {
    static constexpr Kind kind{insertImageSql, u"[ClipboardStore] ERROR: Prepare image insert failed: ",
                               u"[ClipboardStore] ERROR: Image insert failed: "};
    if (m_db == nullptr) {
        return;
    }
    record({kind, imagePath.toUtf8(), hash, preview, &thumbnailPath, sourceApp});
}

void ClipboardStore::insertOrUpdateFile(const QStringList& paths, const QString& sourceApp) {
    static constexpr Kind kind{insertFileSql, u"[ClipboardStore] ERROR: Prepare file insert failed: ",
                               u"[ClipboardStore] ERROR: File insert failed: "};
    if (m_db == nullptr || paths.isEmpty()) {
        return;
    }
    const QByteArray content = paths.join(u'\n').toUtf8();
    record({kind, content, sha256Hex("file|" + content), makeFilePreview(paths), nullptr, sourceApp});
}

void ClipboardStore::record(const Capture& capture) {
    const qint64 time = now();
    if (updateByHash(capture, time) || insert(capture, time)) {
        m_retention->apply(now());
    }
}

// Whether the capture was a repeat. Failures are not reported: the insertion that follows fails as well, and
// reports them.
bool ClipboardStore::updateByHash(const Capture& capture, qint64 time) {
    SqliteStatement update(m_db, updateByHashSql);
    if (!update.isPrepared()) {
        return false;
    }
    update.bindInt64(1, time);
    update.bindText(2, capture.sourceApp);
    update.bindText(3, capture.hash);
    return update.step() == SQLITE_DONE && sqlite3_changes(m_db) >= 1;
}

// False when the statement cannot be prepared, which ends the recording; true also when executing it fails.
bool ClipboardStore::insert(const Capture& capture, qint64 time) {
    SqliteStatement insertion(m_db, capture.kind.insertSql);
    if (!insertion.isPrepared()) {
        printLine(capture.kind.prepareMessage.toString() + lastSqliteError(m_db));
        return false;
    }
    int parameter = 0;
    insertion.bindUtf8(++parameter, capture.content);
    insertion.bindText(++parameter, capture.hash);
    insertion.bindText(++parameter, capture.preview);
    if (capture.thumbnailPath != nullptr) {
        insertion.bindText(++parameter, *capture.thumbnailPath);
    }
    insertion.bindText(++parameter, capture.sourceApp);
    insertion.bindInt64(++parameter, time);
    insertion.bindInt64(++parameter, time);
    if (insertion.step() == SQLITE_DONE) {
        m_retention->rowInserted();
    } else {
        m_retention->forgetCount();
        printLine(capture.kind.insertMessage.toString() + lastSqliteError(m_db));
    }
    return true;
}

void ClipboardStore::incrementCopyCount(qint64 id) {
    if (m_db == nullptr) {
        return;
    }
    SqliteStatement update(m_db, incrementCopyCountSql);
    if (!update.isPrepared()) {
        return;
    }
    update.bindInt64(1, now());
    update.bindInt64(2, id);
    if (update.step() != SQLITE_DONE) {
        printLine(QStringLiteral("[ClipboardStore] ERROR: incrementCopyCount failed: ") +
                  lastSqliteError(m_db));
    }
}

} // namespace corvatto
