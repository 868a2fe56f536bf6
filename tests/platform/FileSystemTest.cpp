#include "platform/FileSystem.h"
#include "support/WithoutPrivileges.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <cerrno>

#include <sys/syscall.h>
#include <unistd.h>

namespace {

QStringList synced;
QString failingSync;

} // namespace

// Takes the place of the C library's: takes note, and fails for a path that contains `failingSync`.
int fsync(int descriptor) {
    const QString path = QFile::symLinkTarget(QStringLiteral("/proc/self/fd/%1").arg(descriptor));
    if (!failingSync.isEmpty() && path.contains(failingSync)) {
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
    static QByteArray contentOf(const QString& path) {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(unreadable)");
    }
};

TEST_F(Files, DirectoriesAreMadeWithTheirParents) {
    const QString directory = path("报告 1/b/c");
    EXPECT_FALSE(createDirectories(directory));
    EXPECT_TRUE(QFileInfo(directory).isDir());
    EXPECT_FALSE(createDirectories(directory)) << "existing ones are fine";

    EXPECT_FALSE(writeFileAtomically(path("file"), "x"));
    const auto error = createDirectories(path("file/below"));
    ASSERT_TRUE(error);
    EXPECT_EQ(error->code, ENOTDIR);
    EXPECT_EQ(error->localizedDescription, QStringLiteral("Not a directory"));
    EXPECT_TRUE(error->description().contains(path("file/below")));
    EXPECT_TRUE(createDirectories(path("file"))) << "a file is no directory";
    EXPECT_TRUE(createDirectories({}));
}

TEST_F(Files, WritesReplaceTheWholeFileOrNothing) {
    const QString file = path("文件.png");
    EXPECT_FALSE(writeFileAtomically(file, QByteArray(100'000, 'a')));
    const QByteArray bytes("new\0content", 11);
    EXPECT_FALSE(writeFileAtomically(file, bytes));
    EXPECT_EQ(contentOf(file), bytes);
    EXPECT_EQ(QDir(home.path()).entryList(QDir::Files), QStringList(QStringLiteral("文件.png")))
        << "left-overs";

    EXPECT_EQ(writeFileAtomically(path("missing/file"), "x").value_or(FileError()).code, ENOENT);
    EXPECT_FALSE(createDirectories(path("directory")));
    EXPECT_TRUE(writeFileAtomically(path("directory"), "x"));
}

TEST_F(Files, WritesAreOnDiskWithTheirNames) {
    ASSERT_FALSE(createDirectories(path("images")));
    EXPECT_TRUE(synced.contains(home.path())) << "the directory's name";
    ASSERT_FALSE(writeFileAtomically(path("images/a.png"), "old"));
    ASSERT_GE(synced.size(), 3);
    EXPECT_TRUE(synced.last(2).first().startsWith(path("images/"))) << "the file, before it is moved";
    EXPECT_EQ(synced.last(), path("images")) << "the file's name";

    failingSync = path("images/");
    EXPECT_EQ(writeFileAtomically(path("images/a.png"), "new").value_or(FileError()).code, EIO);
    EXPECT_EQ(contentOf(path("images/a.png")), "old");
    EXPECT_EQ(QDir(path("images")).entryList(QDir::Files).size(), 1) << "left-overs";
    failingSync.clear();
}

TEST_F(Files, ARefusedWriteKeepsTheOldContent) {
    const QString file = path("file");
    ASSERT_FALSE(writeFileAtomically(file, "old"));
    const test::WithoutPrivileges user({home.path(), file});
    ASSERT_TRUE(user.succeeded());
    ASSERT_TRUE(QFile::setPermissions(home.path(), QFile::ReadOwner | QFile::ExeOwner));
    const auto written = writeFileAtomically(file, "new");
    const auto removed = removeFile(file);
    QFile::setPermissions(home.path(), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    EXPECT_EQ(written.value_or(FileError()).code, EACCES);
    EXPECT_EQ(removed.value_or(FileError()).code, EACCES);
    EXPECT_EQ(contentOf(file), "old");
}

TEST_F(Files, RemovalStopsAtSymbolicLinks) {
    ASSERT_FALSE(createDirectories(path("outside")));
    ASSERT_FALSE(writeFileAtomically(path("outside/kept"), "x"));
    ASSERT_FALSE(createDirectories(path("tree/deep/er")));
    ASSERT_FALSE(writeFileAtomically(path("tree/deep/file"), "x"));
    ASSERT_TRUE(QFile::link(path("outside"), path("tree/link")));
    EXPECT_FALSE(removeDirectoryTree(path("tree")));
    EXPECT_FALSE(QFileInfo::exists(path("tree")));
    EXPECT_TRUE(QFileInfo::exists(path("outside/kept")));
    EXPECT_FALSE(removeDirectoryTree(path("tree"))) << "already gone";

    EXPECT_FALSE(removeFile(path("outside/kept")));
    EXPECT_FALSE(QFileInfo::exists(path("outside/kept")));
}

} // namespace
} // namespace corvatto
