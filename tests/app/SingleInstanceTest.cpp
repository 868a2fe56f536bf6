// The second instance is a process of its own in life; here a child does what it does.
#include "app/SingleInstance.h"

#include "support/Eventually.h"

#include <QDir>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace corvatto::test {
namespace {

using Answer = SingleInstance::Answer;

class SingleInstanceTest : public ::testing::Test {
protected:
    QTemporaryDir home;
    SingleInstance first{home.path()};
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
    bool gives(Answer expected, const QString& request, uid_t user = getuid()) const {
        return inChild(
            [&] { return setuid(user) == 0 && SingleInstance(home.path()).send(request) == expected; });
    }
};

TEST_F(SingleInstanceTest, NeitherWhatACrashLeftNorANonsenseRequestIsInTheWay) {
    ASSERT_TRUE(inChild([this]() -> bool {
        listen();
        _exit(0); // without clearing up
    }));
    EXPECT_TRUE(gives(Answer::Nobody, QStringLiteral("show")));
    listen();
    EXPECT_FALSE(inChild([this] { return SingleInstance(home.path()).becomePrimary(); }));
    EXPECT_TRUE(gives(Answer::None, QString(100'000, QLatin1Char('x'))));
    EXPECT_TRUE(gives(Answer::Done, QStringLiteral("show")));
    EXPECT_EQ(requests, 1);
    first.setStatus(QStringLiteral("well"));
    EXPECT_TRUE(inChild([this] {
        QString status;
        return SingleInstance(home.path()).status(status) == Answer::Done && status == u"well";
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
    EXPECT_FALSE(gives(Answer::Done, QStringLiteral("show"), 65'534));
    EXPECT_EQ(requests, 0);
    EXPECT_TRUE(gives(Answer::Done, QStringLiteral("show")));
    ASSERT_EQ(chown(qPrintable(home.path()), 65'534, 0), 0);
    EXPECT_TRUE(gives(Answer::Nobody, QStringLiteral("show")));
    EXPECT_EQ(requests, 1);
}

// Whatever the length of the runtime directory's path; the name of a socket has 107 bytes.
TEST_F(SingleInstanceTest, AnyRuntimeDirectoryWillDo) {
    qputenv("TMPDIR", home.path().toUtf8());
    for (qsizetype length = 70; length < 115; ++length) {
        const QString runtime = home.filePath(QString(length - home.path().size() - 1, u'r'));
        ASSERT_TRUE(QDir().mkdir(runtime));
        qputenv("XDG_RUNTIME_DIR", runtime.toUtf8());
        SingleInstance instance(SingleInstance::defaultDirectory());
        ASSERT_TRUE(instance.becomePrimary());
        instance.listen([](const QString&) {});
        EXPECT_TRUE(inChild([] {
            return SingleInstance(SingleInstance::defaultDirectory()).send(QString()) == Answer::Done;
        })) << length;
    }
    qunsetenv("TMPDIR");
}

// Nor is anything put where somebody else's link leads.
TEST_F(SingleInstanceTest, ALinkIsNotFollowed) {
    const QString link = home.filePath(QStringLiteral("link"));
    ASSERT_TRUE(QFile::link(home.filePath(QStringLiteral(".")), link));
    EXPECT_TRUE(SingleInstance(link).becomePrimary());
    EXPECT_FALSE(QFileInfo::exists(home.filePath(QStringLiteral("lock"))));
}

} // namespace
} // namespace corvatto::test
