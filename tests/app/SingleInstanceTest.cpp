// The second instance is a process of its own in life; here a child does what it does.
#include "app/SingleInstance.h"

#include "support/Eventually.h"

#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <csignal>

#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace corvatto::test {
namespace {

// What a child process made of `work`, which answers yes or no.
template <typename Work>
bool inChild(Work work) {
    const pid_t child = fork();
    if (child == 0) {
        _exit(work() ? 0 : 1);
    }
    int status = -1;
    EXPECT_TRUE(eventually([&] { return waitpid(child, &status, WNOHANG) == child; }));
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

TEST(SingleInstanceTest, ASecondOneHandsItsRequestToTheFirst) {
    const QTemporaryDir home;
    const QString directory = home.filePath(QStringLiteral("corvatto"));
    SingleInstance first(directory);
    ASSERT_TRUE(first.becomePrimary());
    QStringList requests;
    first.listen([&](const QString& request) { requests.append(request); });

    EXPECT_FALSE(inChild([&] { return SingleInstance(directory).becomePrimary(); }));
    EXPECT_TRUE(inChild([&] { return SingleInstance(directory).send(QStringLiteral("toggle")); }));
    EXPECT_EQ(requests, QStringList{QStringLiteral("toggle")});

    const auto everybodyElse = QFile::ReadGroup | QFile::WriteGroup | QFile::ExeGroup | QFile::ReadOther |
                               QFile::WriteOther | QFile::ExeOther;
    EXPECT_FALSE(QFileInfo(directory).permissions() & everybodyElse);
}

TEST(SingleInstanceTest, WhatACrashLeavesBehindIsNoInstance) {
    const QTemporaryDir home;
    const QString directory = home.filePath(QStringLiteral("corvatto"));
    EXPECT_FALSE(SingleInstance(directory).send(QStringLiteral("show"))); // there was never one
    ASSERT_TRUE(inChild([&]() -> bool {
        SingleInstance crashing(directory);
        const bool isPrimary = crashing.becomePrimary();
        crashing.listen([](const QString&) {});
        _exit(isPrimary ? 0 : 1); // without clearing up
    }));
    EXPECT_FALSE(SingleInstance(directory).send(QStringLiteral("show")));
    SingleInstance next(directory);
    EXPECT_TRUE(next.becomePrimary());
    int requests = 0;
    next.listen([&](const QString&) { ++requests; });
    EXPECT_TRUE(inChild([&] { return SingleInstance(directory).send(QStringLiteral("show")); }));
    EXPECT_EQ(requests, 1);
}

TEST(SingleInstanceTest, ANonsenseRequestEndsThatConnectionOnly) {
    const QTemporaryDir home;
    SingleInstance first(home.path());
    ASSERT_TRUE(first.becomePrimary());
    int requests = 0;
    first.listen([&](const QString&) { ++requests; });
    EXPECT_FALSE(
        inChild([&] { return SingleInstance(home.path()).send(QString(100'000, QLatin1Char('x'))); }));
    EXPECT_TRUE(inChild([&] { return SingleInstance(home.path()).send(QStringLiteral("show")); }));
    EXPECT_EQ(requests, 1);
}

// Even one to whom the way to the socket stands open.
TEST(SingleInstanceTest, AnotherUserIsNotHeard) {
    if (geteuid() != 0) {
        GTEST_SKIP() << "no right to become another user";
    }
    const QTemporaryDir home;
    SingleInstance first(home.path());
    ASSERT_TRUE(first.becomePrimary());
    int requests = 0;
    first.listen([&](const QString&) { ++requests; });
    ASSERT_EQ(chmod(qPrintable(home.path()), 0777), 0);
    ASSERT_EQ(chmod(qPrintable(home.filePath(QStringLiteral("instance"))), 0777), 0);
    const auto sendAs = [&](uid_t user) {
        return inChild(
            [&] { return setuid(user) == 0 && SingleInstance(home.path()).send(QStringLiteral("show")); });
    };
    EXPECT_FALSE(sendAs(65'534));
    EXPECT_EQ(requests, 0);
    EXPECT_TRUE(sendAs(0));
}

// Nor is anything put where somebody else's link leads.
TEST(SingleInstanceTest, ALinkIsNotFollowed) {
    const QTemporaryDir home;
    const QString link = home.filePath(QStringLiteral("link"));
    ASSERT_TRUE(QFile::link(home.filePath(QStringLiteral(".")), link));
    SingleInstance first(link);
    EXPECT_TRUE(first.becomePrimary());
    EXPECT_FALSE(QFileInfo::exists(home.filePath(QStringLiteral("lock"))));
}

} // namespace
} // namespace corvatto::test
