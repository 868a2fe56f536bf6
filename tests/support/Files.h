// Files of a test's own, whole.
#pragma once

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <gtest/gtest.h>

namespace corvatto::test {

// With the directories that lead to it. A file that is there keeps its place and gets other content.
inline void writeFile(const QString& path, const QByteArray& content) {
    QFile file(path);
    EXPECT_TRUE(QDir().mkpath(QFileInfo(path).path()) && file.open(QIODevice::WriteOnly) &&
                file.write(content) == content.size())
        << path.toStdString();
}

inline QByteArray contentOf(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(unreadable)");
}

} // namespace corvatto::test
