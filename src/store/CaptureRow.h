// The writing of captures and copy-backs to the database. Private to this room.
#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

struct sqlite3;

namespace corvatto {

// What differs between the kinds of entries: the statement that inserts one, and the messages of failures.
struct CaptureKind {
    const char* insertSql;
    QStringView prepareMessage;
    QStringView insertMessage;

    static const CaptureKind text, image, file;
};

struct Capture {
    const CaptureKind* kind;
    QByteArray content; // UTF-8
    QString hash;       // empty for the content's own
    QString preview;
    QString thumbnailPath; // of an image
    QString sourceApp;
    qint64 time; // seconds since 1970
};

struct WrittenCapture {
    enum class Result { repeated, inserted, notInserted, notPrepared };
    Result result;
    QString error; // the line to print; empty for none
};

// Counts a repeat when an entry with the same hash is stored, else inserts one. Any thread that `db` belongs
// to.
WrittenCapture write(sqlite3* db, Capture capture);

// Counts that the entry was copied back at `time`. An unknown id changes nothing.
WrittenCapture countCopyBack(sqlite3* db, qint64 id, qint64 time);

} // namespace corvatto
