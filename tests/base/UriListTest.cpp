#include "base/UriList.h"

#include <QSysInfo>

#include <gtest/gtest.h>

namespace corvatto {
namespace {

QStringList paths(const QList<QUrl>& urls) {
    QStringList result;
    for (const QUrl& url : urls) {
        EXPECT_TRUE(url.isLocalFile()) << url.toString().toStdString();
        result << url.toLocalFile();
    }
    return result;
}

QStringList inUriList(const QByteArray& bytes) {
    return paths(fileURLsFromUriList(bytes));
}

TEST(UriList, ReadsEveryWayOfWritingALocalFile) {
    EXPECT_EQ(inUriList("# comment\r\nfile:///a%20b\r\nfile://localhost/c\r\n\r\nfile:/d\r\n"),
              QStringList({QStringLiteral("/a b"), QStringLiteral("/c"), QStringLiteral("/d")}));
    EXPECT_EQ(inUriList("file:///one\nfile:////two"),
              QStringList({QStringLiteral("/one"), QStringLiteral("/two")}));
    EXPECT_EQ(inUriList("file:///%E6%96%87%E4%BB%B6%25.txt"), QStringList(QStringLiteral("/文件%.txt")));
    EXPECT_EQ(inUriList("file:///文件 100%.txt"), QStringList(QStringLiteral("/文件 100%.txt")))
        << "unescaped";
    EXPECT_EQ(inUriList("file://" + QSysInfo::machineHostName().toUtf8() + "/here"),
              QStringList(QStringLiteral("/here")));
}

TEST(UriList, LeavesOutWhatIsNoFileOfThisMachine) {
    EXPECT_EQ(
        inUriList("http://example.org/a\r\nfile://elsewhere/b\r\nsftp://host/c\r\n/d\r\nfile:relative\r\n"
                  "file://\r\nfile:///nul%00\r\nfile:///two%0Alines\r\nfile:///good"),
        QStringList(QStringLiteral("/good")));
    EXPECT_EQ(paths(fileURLsFromGnomeCopiedFiles("cut\nfile:///a")), QStringList(QStringLiteral("/a")));
    EXPECT_TRUE(fileURLsFromGnomeCopiedFiles("file:///a\nfile:///b").isEmpty());
}

} // namespace
} // namespace corvatto
