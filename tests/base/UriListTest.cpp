#include "base/UriList.h"
#include "base/FilePath.h"

#include <QSysInfo>

#include <gtest/gtest.h>

namespace corvatto {
namespace {

QList<QByteArray> paths(const QList<QUrl>& urls) {
    QList<QByteArray> result;
    for (const QUrl& url : urls) {
        EXPECT_TRUE(url.isLocalFile()) << url.toString().toStdString();
        result << pathOf(url);
    }
    return result;
}

QList<QByteArray> inUriList(const QByteArray& bytes) {
    return paths(fileURLsFromUriList(bytes));
}

using Paths = QList<QByteArray>;

TEST(UriList, ReadsEveryWayOfWritingALocalFile) {
    EXPECT_EQ(inUriList("# comment\r\nfile:///a%20b\r\nFILE://localhost/c\r\n\r\nfile:/d\r\n"),
              Paths({"/a b", "/c", "/d"}));
    EXPECT_EQ(inUriList("file:///one\nfile:////two"), Paths({"/one", "/two"}));
    EXPECT_EQ(inUriList("file:///%E6%96%87%E4%BB%B6%25.txt"), Paths({"/文件%.txt"}));
    EXPECT_EQ(inUriList("file:///文件 100%.txt"), Paths({"/文件 100%.txt"})) << "unescaped";
    EXPECT_EQ(inUriList("file:///C#/why?.txt"), Paths({"/C#/why?.txt"}));
    EXPECT_EQ(inUriList("file:///caf%E9.txt\nfile:///caf\xE8.txt"), Paths({"/caf\xE9.txt", "/caf\xE8.txt"}));
    EXPECT_EQ(inUriList(QByteArray("file:///first\r\nfile:///last\r\n\0", 31)), Paths({"/first", "/last"}));
    EXPECT_EQ(inUriList(QByteArray("file:///only\0", 13)), Paths({"/only"}));
    EXPECT_EQ(inUriList("file://" + QSysInfo::machineHostName().toUtf8() + "/here"), Paths({"/here"}));
}

TEST(UriList, LeavesOutWhatIsNoFileOfThisMachine) {
    EXPECT_EQ(
        inUriList("http://example.org/a\r\nfile://elsewhere/b\r\nsftp://host/c\r\n/d\r\nfile:relative\r\n"
                  "file://\r\nfile:///nul%00\r\nfile:///good"),
        Paths({"/good"}));
    EXPECT_EQ(paths(fileURLsFromGnomeCopiedFiles("cut\nfile:///a")), Paths({"/a"}));
    EXPECT_TRUE(fileURLsFromGnomeCopiedFiles("file:///a\nfile:///b").isEmpty());
}

// Whatever bytes a path holds, it can be written as a line of text and found again.
TEST(FilePath, EveryPathComesBackFromItsLine) {
    for (const QByteArray path :
         {"/plain", "/文件 100%.txt", "/caf\xE9.txt", "/\xC4\xE3\xBA\xC3#?.txt", "/two\nlines"}) {
        EXPECT_EQ(nativePath(pathLine(path)), path);
        EXPECT_EQ(pathOf(fileUrl(path)), path);
        EXPECT_FALSE(pathLine(path).contains(u'\n'));
    }
    EXPECT_EQ(pathLine("/文件 100%.txt"), QStringLiteral("/文件 100%.txt"));
    EXPECT_EQ(displayName(pathLine("/a/caf\xE9.txt/")), QStringLiteral("caf\uFFFD.txt"));
    EXPECT_EQ(displayName(QStringLiteral("/")), QStringLiteral("/"));
}

} // namespace
} // namespace corvatto
