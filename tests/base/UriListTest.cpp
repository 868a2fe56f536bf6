#include "base/UriList.h"
#include "base/FilePath.h"

#include <QSysInfo>

#include <gtest/gtest.h>

namespace corvatto {
namespace {

using Paths = QList<QByteArray>;

Paths pathsOf(const QList<QUrl>& urls) {
    Paths paths(urls.size());
    std::transform(urls.begin(), urls.end(), paths.begin(), pathOf);
    return paths;
}

Paths inUriList(const QByteArray& bytes) {
    return pathsOf(fileURLsFromUriList(bytes));
}

TEST(UriList, ReadsEveryWayOfWritingALocalFile) {
    EXPECT_EQ(inUriList("# comment\r\nfile:///%E6%96%87%25\r\nFILE://localhost/c\r\n\r\nfile:/d\r\n"),
              Paths({"/文%", "/c", "/d"}));
    EXPECT_EQ(inUriList("file:///one\nfile:////two"), Paths({"/one", "/two"}));
    EXPECT_EQ(inUriList("file:///文件 100%.txt"), Paths({"/文件 100%.txt"})) << "unescaped";
    EXPECT_EQ(inUriList("file:///C#/why?.txt"), Paths({"/C#/why?.txt"}));
    EXPECT_EQ(inUriList("file:///caf%E9.txt\nfile:///caf\xE8.txt"), Paths({"/caf\xE9.txt", "/caf\xE8.txt"}));
    EXPECT_EQ(inUriList(QByteArray("file:///first\r\nfile:///last\r\n\0", 31)), Paths({"/first", "/last"}));
    EXPECT_EQ(inUriList("file://" + QSysInfo::machineHostName().toUtf8() + "/here"), Paths({"/here"}));
}

TEST(UriList, LeavesOutWhatIsNoFileOfThisMachine) {
    EXPECT_EQ(
        inUriList("http://example.org/a\r\nfile://elsewhere/b\r\nsftp://host/c\r\n/d\r\nfile:relative\r\n"
                  "file://\r\nfile:///nul%00\r\nfile:///good"),
        Paths({"/good"}));
    EXPECT_EQ(pathsOf(fileURLsFromGnomeCopiedFiles("cut\nfile:///a")), Paths({"/a"}));
    EXPECT_TRUE(fileURLsFromGnomeCopiedFiles("file:///a\nfile:///b").isEmpty());
}

// Whatever bytes a path holds, it can be written as a line of text and found again.
TEST(FilePath, EveryPathComesBackFromItsLine) {
    for (const QByteArray path : {"/文件 100%.txt", "/\xC4\xE3\xBA\xC3#?.txt", "/two\nlines"}) {
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
