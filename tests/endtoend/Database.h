// The history's database as another program sees it.
#pragma once

#include <QByteArray>
#include <QList>

#include <optional>

namespace corvatto::test {

class Database {
public:
    struct Row {
        QByteArray content, hash, preview, type;
        std::optional<QByteArray> thumbnail;
        QByteArray sourceApp;
        qint64 copyCount = 0, firstCopiedAt = 0, lastCopiedAt = 0;
    };

    struct Entry {
        QByteArray content;
        QByteArray type = "text";
        QByteArray preview = content;
    };

    explicit Database(QByteArray path) : m_path(std::move(path)) {}

    const QByteArray& path() const { return m_path; }

    // Newest first. Waits until there is a database. Does not keep the program from writing, which logs
    // ahead.
    QList<Row> rows() const;
    std::optional<Row> find(const QByteArray& content) const;

    QByteArray check() const; // what SQLite finds wrong with the file, or "ok"

    // Replaces the history, the first entry being the newest and each a minute older than the one before. For
    // times when the program does not run or has nothing to do.
    void fill(const QList<Entry>& entries) const;
    void execute(const QByteArray& sql) const;

private:
    QByteArray m_path;
};

} // namespace corvatto::test
