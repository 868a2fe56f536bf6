// The history's database as another program sees it.
#pragma once

#include <QByteArray>
#include <QList>

#include <optional>

namespace corvatto::test {

class Database {
public:
    struct Row {
        QByteArray content, preview, type, thumbnail, sourceApp;
        qint64 copyCount = 0;
    };

    explicit Database(QByteArray path) : m_path(std::move(path)) {}

    const QByteArray& path() const { return m_path; }

    // Newest first. Waits until there is a database. Does not keep the program from writing, which logs
    // ahead.
    QList<Row> rows() const;
    std::optional<Row> find(const QByteArray& content) const;

    bool isWhole() const; // in SQLite's opinion

    // Replaces the history by texts, the first being the newest and each a minute older than the one before.
    // For times when the program does not run or has nothing to do.
    void fill(const QByteArrayList& texts) const;
    void execute(const QByteArray& sql) const;

private:
    QByteArray m_path;
};

} // namespace corvatto::test
