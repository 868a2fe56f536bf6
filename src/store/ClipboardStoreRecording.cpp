// The writes: captures of each kind, de-duplicated by content hash, and copy-backs.
#include "store/ClipboardStore.h"

#include "base/Diagnostics.h"
#include "base/FilePath.h"
#include "base/Graphemes.h"
#include "base/TextDecoding.h"
#include "store/ContentHash.h"

#include "CaptureRow.h"
#include "ContentBlob.h"
#include "Retention.h"
#include "SqliteStatement.h"
#include "WorkerConnection.h"
#include "WriteAheadLog.h"

#include <algorithm>

namespace corvatto {
namespace {

// A longer text is written beside the main thread: writing a megabyte takes milliseconds.
constexpr qsizetype longestWrittenAtOnce = 1 << 20; // bytes

constexpr qsizetype previewLength = 120; // user-perceived characters

// The text on one line, cut to previewLength. Looks at a window of the text that grows until it is large
// enough, because the text may be of any size.
QString makeTextPreview(QByteArrayView utf8) {
    for (qsizetype window = 8 * previewLength;; window *= 8) {
        const QByteArrayView seen = utf8Prefix(utf8, window);
        QString line = textOf(seen);
        std::replace_if(
            line.begin(), line.end(),
            [](QChar character) { return character == u'\n' || character == u'\r'; }, u' ');
        // Whether a character ends at a place depends on the next code point.
        const QStringView preview = graphemePrefix(line, previewLength);
        if (preview.size() < line.size() || seen.size() == utf8.size()) {
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

qsizetype sizeOfContent(sqlite3* db, qint64 id) {
    ContentBlob content(db);
    return content.open(id) ? content.size() : 0;
}

} // namespace

void ClipboardStore::insertOrUpdate(const QByteArray& utf8Text, const QString& sourceApp, Recorded recorded) {
    record({&CaptureKind::text, utf8Text, {}, makeTextPreview(utf8Text), {}, sourceApp, now()},
           std::move(recorded));
}

void ClipboardStore::insertOrUpdate(const QString& text, const QString& sourceApp, Recorded recorded) {
    insertOrUpdate(text.toUtf8(), sourceApp, std::move(recorded));
}

void ClipboardStore::insertOrUpdateImage(const QString& imagePath, const QString& thumbnailPath,
                                         const QString& hash, const QString& preview,
                                         const QString& sourceApp, Recorded recorded) {
    record({&CaptureKind::image, imagePath.toUtf8(), hash, preview, thumbnailPath, sourceApp, now()},
           std::move(recorded));
}

std::shared_ptr<void> ClipboardStore::keepImageFiles() {
    return m_retention ? m_retention->keepFiles() : nullptr;
}

void ClipboardStore::insertOrUpdateFile(const QStringList& paths, const QString& sourceApp,
                                        Recorded recorded) {
    if (paths.isEmpty()) {
        return;
    }
    const QByteArray content = paths.join(u'\n').toUtf8();
    record({&CaptureKind::file,
            content,
            sha256Hex("file|" + content),
            makeFilePreview(paths),
            {},
            sourceApp,
            now()},
           std::move(recorded));
}

void ClipboardStore::record(Capture capture, Recorded recorded) {
    if (m_db != nullptr) {
        m_writing.add([this, capture = std::move(capture), recorded = std::move(recorded)] {
            write(
                capture.content.size(), [capture](sqlite3* db) { return corvatto::write(db, capture); },
                [this, recorded](const WrittenCapture& written) {
                    captureWritten(written);
                    if (recorded) {
                        recorded();
                    }
                });
        });
    } else if (recorded) {
        recorded();
    }
}

// Writes to an entry, on this thread or, since SQLite writes the whole row in any case, beside it.
void ClipboardStore::write(qsizetype contentSize, const Writing& writing,
                           const std::function<void(const WrittenCapture&)>& written) {
    if (!canWorkBeside() || contentSize <= longestWrittenAtOnce) {
        written(writing(m_db));
        return;
    }
    m_retention->pause();
    m_writing.goOnBeside(
        [database = m_database, writing] {
            const WorkerConnection connection(database);
            const WrittenCapture result = writing(connection);
            executeSql(connection, "PRAGMA wal_checkpoint(TRUNCATE)");
            beginLog(connection);
            return result;
        },
        [this, written](const WrittenCapture& result) {
            m_retention->resume();
            written(result);
        });
}

void ClipboardStore::captureWritten(const WrittenCapture& written) {
    using Result = WrittenCapture::Result;
    if (!written.error.isEmpty()) {
        printLine(written.error);
    }
    if (written.result == Result::inserted) {
        m_retention->rowInserted();
    } else if (written.result == Result::notInserted) {
        m_retention->forgetCount();
    }
    if (written.result != Result::notPrepared) {
        m_retention->apply(now());
    }
}

void ClipboardStore::incrementCopyCount(qint64 id) {
    if (m_db == nullptr) {
        return;
    }
    m_writing.add([this, id, time = now()] {
        write(
            canWorkBeside() ? sizeOfContent(m_db, id) : 0,
            [id, time](sqlite3* db) { return countCopyBack(db, id, time); },
            [](const WrittenCapture& written) {
                if (!written.error.isEmpty()) {
                    printLine(written.error);
                }
            });
    });
}

} // namespace corvatto
