#include "base/FileSystem.h"
#include "support/Files.h"
#include "support/WithoutPrivileges.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <cerrno>

#include <sys/syscall.h>
#include <unistd.h>

namespace {

QStringList synced;
QString failingSync = QStringLiteral("(none)");

} // namespace

// Takes the place of the C library's: takes note, and fails for a path that contains `failingSync`.
int fsync(int descriptor) {
    const QString path = QFile::symLinkTarget(QStringLiteral("/proc/self/fd/%1").arg(descriptor));
    if (path.contains(failingSync)) {
        errno = EIO;
        return -1;
    }
    synced << path;
    return static_cast<int>(syscall(SYS_fsync, descriptor));
}

namespace corvatto {
namespace {

class Files : public ::testing::Test {
protected:
    QTemporaryDir home;

    QString path(const char* name) const { return home.path() + u'/' + QString::fromUtf8(name); }
};

TEST_F(Files, WritesAreOnDiskWithTheirNamesOrNotThereAtAll) {
    ASSERT_FALSE(createDirectories(path("报告 1/images")));
    EXPECT_TRUE(synced.contains(path("报告 1"))) << "the directory's name";
    EXPECT_FALSE(createDirectories(path("报告 1/images"))) << "existing ones are fine";
    const QString file = path("报告 1/images/文件.png");
    ASSERT_FALSE(writeFileAtomically(file, QByteArray(100'000, 'a')));
    const QByteArray bytes("new\0content", 11);
    ASSERT_FALSE(writeFileAtomically(file, bytes));
    ASSERT_GE(synced.size(), 4);
    EXPECT_TRUE(synced.last(2).first().startsWith(path("报告 1/images/"))) << "the file, before it is moved";
    EXPECT_EQ(synced.last(), path("报告 1/images")) << "the file's name";

    failingSync = path("报告 1/images/");
    EXPECT_EQ(writeFileAtomically(file, "newer").value_or(FileError()).code, EIO);
    failingSync = QStringLiteral("(none)");
    EXPECT_EQ(test::contentOf(file), bytes);
    EXPECT_EQ(QDir(path("报告 1/images")).entryList(QDir::Files).size(), 1) << "left-overs";

    const auto error = createDirectories(file + QStringLiteral("/below"));
    ASSERT_TRUE(error);
    EXPECT_EQ(error->description(), QStringLiteral("Not a directory (code 20, path %1/below)").arg(file));
    EXPECT_TRUE(createDirectories(file)) << "a file is no directory";
}

TEST_F(Files, ARefusedWriteKeepsTheOldContent) {
    const QString file = path("file");
    ASSERT_FALSE(writeFileAtomically(file, "old"));
    const test::WithoutPrivileges user({home.path(), file});
    ASSERT_TRUE(user.succeeded());
    ASSERT_TRUE(QFile::setPermissions(home.path(), QFile::ReadOwner | QFile::ExeOwner));
    const auto written = writeFileAtomically(file, "new");
    QFile::setPermissions(home.path(), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    EXPECT_EQ(written.value_or(FileError()).code, EACCES);
    EXPECT_EQ(test::contentOf(file), "old");
}

TEST_F(Files, RemovalStopsAtSymbolicLinks) {
    ASSERT_FALSE(createDirectories(path("outside/kept")));
    ASSERT_FALSE(createDirectories(path("tree/deep")));
    ASSERT_FALSE(writeFileAtomically(path("tree/deep/file"), "x"));
    ASSERT_TRUE(QFile::link(path("outside"), path("tree/link")));
    EXPECT_FALSE(removeDirectoryTree(path("tree")));
    EXPECT_FALSE(QFileInfo::exists(path("tree")));
    EXPECT_TRUE(QFileInfo::exists(path("outside/kept")));
}

} // namespace
} // namespace corvatto
