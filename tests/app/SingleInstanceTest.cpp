// The second instance is a process of its own in life; here a child does what it does.
#include "app/SingleInstance.h"

#include "command/InstanceRequest.h"
#include "support/Eventually.h"

#include <QDir>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTimer>

#include <gtest/gtest.h>

#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace corvatto::test {
namespace {

using Outcome = Answer::Outcome;

class SingleInstanceTest : public ::testing::Test {
protected:
    QTemporaryDir home;
    const std::string directory = home.path().toStdString();
    SingleInstance first{directory};
    int requests = 0;

    void listen() {
        ASSERT_TRUE(first.becomePrimary());
        first.listen([this](const QString&) { ++requests; });
    }
    // What a child process made of `work`, which answers yes or no.
    template <typename Work>
    static bool inChild(Work work) {
        const pid_t child = fork();
        if (child == 0) {
            _exit(work() ? 0 : 1);
        }
        int status = -1;
        EXPECT_TRUE(eventually([&] { return waitpid(child, &status, WNOHANG) == child; }));
        return WIFEXITED(status) && WEXITSTATUS(status) == 0;
    }
    bool gives(Outcome expected, const std::string& request, uid_t user = getuid()) const {
        return inChild(
            [&] { return setuid(user) == 0 && askInstance(directory, request).outcome == expected; });
    }
};

TEST_F(SingleInstanceTest, NeitherWhatACrashLeftNorANonsenseRequestIsInTheWay) {
    ASSERT_TRUE(inChild([this]() -> bool {
        listen();
        _exit(0); // without clearing up
    }));
    EXPECT_TRUE(gives(Outcome::Nobody, "show"));
    listen();
    EXPECT_FALSE(inChild([this] { return SingleInstance(directory).becomePrimary(); }));
    EXPECT_TRUE(gives(Outcome::None, std::string(100'000, 'x')));
    EXPECT_TRUE(gives(Outcome::Done, "show"));
    EXPECT_EQ(requests, 1);
    first.setStatus(QStringLiteral("well"));
    EXPECT_TRUE(inChild([this] {
        const Answer answer = askInstance(directory, statusRequest);
        return answer.outcome == Outcome::Done && answer.text == "well\n";
    }));
}

TEST_F(SingleInstanceTest, AClientIsAnsweredOnceThereIsADescriptorForIt) {
    listen();
    rlimit usual{};
    ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &usual), 0);
    const int next = dup(STDIN_FILENO);
    close(next);
    const rlimit none{static_cast<rlim_t>(next), usual.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &none), 0);
    QTimer::singleShot(200, [&usual] { setrlimit(RLIMIT_NOFILE, &usual); });
    EXPECT_TRUE(inChild([&] {
        return setrlimit(RLIMIT_NOFILE, &usual) == 0 &&
               askInstance(directory, "show").outcome == Outcome::Done;
    }));
}

// Even one to whom the way to the socket stands open.
TEST_F(SingleInstanceTest, AnotherUserIsNeitherHeardNorBelieved) {
    if (geteuid() != 0) {
        GTEST_SKIP() << "no right to become another user";
    }
    listen();
    ASSERT_EQ(chmod(qPrintable(home.path()), 0777), 0);
    ASSERT_EQ(chmod(qPrintable(home.filePath(QStringLiteral("instance"))), 0777), 0);
    EXPECT_FALSE(gives(Outcome::Done, "show", 65'534));
    EXPECT_EQ(requests, 0);
    EXPECT_TRUE(gives(Outcome::Done, "show"));
    ASSERT_EQ(chown(qPrintable(home.path()), 65'534, 0), 0);
    EXPECT_TRUE(gives(Outcome::Nobody, "show"));
    EXPECT_EQ(requests, 1);
}

// Whatever the length of the runtime directory's path; the name of a socket has 107 bytes.
TEST_F(SingleInstanceTest, AnyRuntimeDirectoryWillDo) {
    qputenv("TMPDIR", home.path().toUtf8());
    for (qsizetype length = 70; length < 115; ++length) {
        const QString runtime = home.filePath(QString(length - home.path().size() - 1, u'r'));
        ASSERT_TRUE(QDir().mkdir(runtime));
        qputenv("XDG_RUNTIME_DIR", runtime.toUtf8());
        SingleInstance instance(instanceDirectory());
        ASSERT_TRUE(instance.becomePrimary());
        instance.listen([](const QString&) {});
        EXPECT_TRUE(inChild([] { return askInstance(instanceDirectory(), {}).outcome == Outcome::Done; }))
            << length;
    }
    qunsetenv("TMPDIR");
}

// Nor is anything put where somebody else's link leads.
TEST_F(SingleInstanceTest, ALinkIsNotFollowed) {
    const QString link = home.filePath(QStringLiteral("link"));
    ASSERT_TRUE(QFile::link(home.filePath(QStringLiteral(".")), link));
    EXPECT_TRUE(SingleInstance(link.toStdString()).becomePrimary());
    EXPECT_FALSE(QFileInfo::exists(home.filePath(QStringLiteral("lock"))));
}

} // namespace
} // namespace corvatto::test
