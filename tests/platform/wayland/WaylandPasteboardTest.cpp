// The clipboard of a Wayland session among programs that offer and paste in every way.
#include "WaylandTest.h"

#include "base/ImageDecoding.h"
#include "platform/wayland/IncomingStream.h"

#include <csignal>
#include <thread>

#include <dirent.h>
#include <fcntl.h>
#include <poll.h>
#include <pthread.h>
#include <sys/syscall.h>
#include <sys/wait.h>

using namespace std::chrono_literals;

namespace corvatto::test {
namespace {

const QByteArray text = "text/plain;charset=utf-8";

class WaylandPasteboardTest : public WaylandTest {};

// A process that writes to a descriptor and lives on, as programs do that the user copies in, or begins to
// exit and is stopped in that.
class OwnerProcessOfTest {
public:
    enum class Then { livesOn, isExiting };
    OwnerProcessOfTest(const FileDescriptor& receiver, const QByteArray& bytes, Then then = Then::livesOn) {
        std::array<int, 2> closed{}; // says that the receiver is
        (void)!::pipe(closed.data());
        m_process = ::fork();
        if (m_process == 0) {
            ::signal(SIGPIPE, SIG_DFL);
            (void)!::write(receiver.number(), bytes.constData(), static_cast<std::size_t>(bytes.size()));
            if (then == Then::isExiting) {
                std::thread([&, first = ::pthread_self()] {
                    ::pthread_join(first, nullptr);
                    closeAndPause(receiver, closed[1]);
                }).detach();
                ::syscall(SYS_exit, 0); // of this thread only
            }
            closeAndPause(receiver, closed[1]);
        }
        ::close(closed[1]);
        pollfd end{closed[0], POLLIN, 0};
        ::poll(&end, 1, then == Then::isExiting ? -1 : 0);
        ::close(closed[0]);
    }
    ~OwnerProcessOfTest() { exit(); }
    OwnerProcessOfTest(const OwnerProcessOfTest&) = delete;
    OwnerProcessOfTest& operator=(const OwnerProcessOfTest&) = delete;
    void exit() {
        if (m_process > 0) {
            ::kill(m_process, SIGKILL);
            ::waitpid(std::exchange(m_process, 0), nullptr, 0);
        }
    }

private:
    static void closeAndPause(const FileDescriptor& receiver, int closed) {
        ::close(receiver.number());
        ::close(closed);
        for (;;) {
            ::pause();
        }
    }
    pid_t m_process;
};

int openDescriptors() {
    int count = 0;
    DIR* const all = ::opendir("/proc/self/fd");
    while (::readdir(all) != nullptr) {
        ++count;
    }
    ::closedir(all);
    return count;
}

} // namespace

TEST_F(WaylandPasteboardTest, CopiesAndPastesUnderEachNameOfTheProtocol) {
    QImage pixels(40, 30, QImage::Format_RGB32);
    pixels.fill(Qt::darkCyan);
    const struct {
        const char* manager;
        int version;
    } protocols[] = {{"zwlr_data_control_manager_v1", 1},
                     {"zwlr_data_control_manager_v1", 2},
                     {"ext_data_control_manager_v1", 1}};
    for (const auto& [manager, version] : protocols) {
        start(manager, version);
        pasteboard->writeImage(Image(pixels));
        letGo();
        EXPECT_EQ(decodeImage(paste("image/bmp")), pixels); // which has to be made

        inFront = QStringLiteral("Editor");
        compositor->copy({{text, "中文"}, {"text/html", "<b>"}});
        letGo(); // it is announced
        inFront = QStringLiteral("Other");
        EXPECT_TRUE(soonCounted(2)) << manager << version;
        EXPECT_EQ(pasteboard->string(), QStringLiteral("中文"));
        EXPECT_EQ(pasteboard->sourceApplicationName(), QStringLiteral("Editor"));
        EXPECT_EQ(compositor->requests, QByteArrayList({text}));

        EXPECT_EQ(compositor->marksText(), QByteArray(manager).startsWith("ext")) << "where it must be";
        letGo();
        EXPECT_EQ(pasteboard->changeCount(), 2);
        EXPECT_EQ(compositor->primaryWrites, 0);
        EXPECT_EQ(compositor->offers, 1) << "all others are given back";
        pasteboard.reset();
    }
}

// Our own text fields write while the event loop, which would read, waits for them.
TEST(IncomingStream, TakesTheTextOfATextFieldWithoutAnybodyReading) {
    const IncomingStream::Ends ends = IncomingStream::newEnds();
    ::fcntl(ends.theirs.number(), F_SETFL, O_NONBLOCK);
    const QByteArray longest(qsizetype{3} * 32'767, 'x'); // of characters that take three bytes each
    EXPECT_EQ(::write(ends.theirs.number(), longest.constData(), static_cast<std::size_t>(longest.size())),
              longest.size());
}

TEST_F(WaylandPasteboardTest, GoesByTheNameThatTheCompositorDoesNotRefuse) {
    for (const auto& [refused, accepted] :
         {std::pair("ext_data_control_manager_v1", "zwlr_data_control_manager_v1"),
          {"zwlr_data_control_manager_v1", "ext_data_control_manager_v1"}}) {
        compositor.emplace(accepted, 1);
        compositor->announceInVain(refused);
        const auto abilities = compositor->probe();
        EXPECT_EQ(abilities.dataControl, accepted);
        connectAndLook(abilities.dataControl);
        compositor->copy({{text, accepted}});
        EXPECT_TRUE(soonCopied(QLatin1String(accepted)));
        pasteboard.reset();
    }
}

TEST_F(WaylandPasteboardTest, BadOwnersCostTheirOwnCopyOnly) {
    limits.silence = 60ms;
    limits.total = 2s;
    limits.textBytes = 100'000;
    start();
    CapturedOutput output;
    std::vector<FileDescriptor> kept;
    std::optional<OwnerProcessOfTest> process;
    const std::pair<const char*, FakeCompositor::Asked> owners[] = {
        {"silent",
         [&](const QByteArray&, FileDescriptor to) {
             kept.push_back(std::move(to));
         }},
        {"stops in the middle",
         [&](const QByteArray&, FileDescriptor to) {
             writeAll(to, "beginning");
             kept.push_back(std::move(to));
         }},
        {"too large",
         [&](const QByteArray&, FileDescriptor to) {
             process.emplace(to, QByteArray(200'000, 'x'));
         }},
        {"refuses",
         [&](const QByteArray&, FileDescriptor) {
         }},
    };
    qint64 count = 0;
    for (const auto& [name, owner] : owners) {
        compositor->copy({{"UTF8_STRING", {}}}, owner);
        EXPECT_TRUE(soonCounted(++count)) << name;
        EXPECT_FALSE(pasteboard->string()) << name;
        EXPECT_TRUE(eventually([&] {
            compositor->copy({{text, name}});
            return pasteboard->string() == QLatin1String(name);
        }));
        count = pasteboard->changeCount();
        // The next copy is no quick one.
        pasteboard.reset();
        connection.reset();
        connectAndLook();
        count = 0;
    }
    EXPECT_EQ(output.text(), "[Pasteboard] ERROR: The clipboard owner did not deliver UTF8_STRING in time.\n"
                             "[Pasteboard] ERROR: The clipboard owner did not deliver UTF8_STRING in time.\n"
                             "[Pasteboard] ERROR: UTF8_STRING is larger than 100000 bytes, not read.\n");
}

// The end of the content is told by the kernel, the end of its program by the compositor, perhaps later.
TEST_F(WaylandPasteboardTest, AcceptsNothingFromAProgramThatCrashesInTheMiddle) {
    start();
    for (const int questionsUntilNoticed : {1, 2}) {
        compositor->copy({{text, {}}}, [&](const QByteArray&, FileDescriptor to) {
            writeAll(to, "the first half");
            compositor->onSync = [this, left = questionsUntilNoticed]() mutable {
                if (--left == 0) {
                    compositor->empty();
                }
            };
        });
        const qint64 count = pasteboard->changeCount();
        EXPECT_TRUE(soonCounted(count + 1));
        EXPECT_FALSE(pasteboard->string());
        compositor->onSync = {};
        pasteboard.reset();
        connection.reset();
        connectAndLook();
    }
}

TEST_F(WaylandPasteboardTest, AnOwnWriteCountsAtOnceAndIsKnownWhenItIsAnnounced) {
    start();
    FileDescriptor kept;
    compositor->copy({{text, {}}}, [&](const QByteArray&, FileDescriptor to) { kept = std::move(to); });
    EXPECT_TRUE(eventually([&] { return kept.isOpen(); }));
    for (const bool isAnnounced : {true, false}) {
        compositor->announcesOwnWrites = isAnnounced;
        const qint64 count = pasteboard->changeCount();
        compositor->copy({{text, "just before"}}); // and we have not heard of it
        pasteboard->setString(QStringLiteral("mine"));
        EXPECT_EQ(pasteboard->changeCount(), count + 1);
        (void)!::write(kept.number(), "late", 4); // to nobody
        kept.close();
        letGo();
        EXPECT_EQ(paste(text), "mine");
        letGo();
        EXPECT_EQ(pasteboard->changeCount(), count + 1);
        EXPECT_EQ(pasteboard->string(), QStringLiteral("mine"));
        kept = FileDescriptor(::open("/dev/null", O_WRONLY));
    }
    EXPECT_EQ(compositor->requests, QByteArrayList({text}));

    // One change for other programs, and two counts for ours.
    const int writes = compositor->writes;
    const qint64 count = pasteboard->changeCount();
    pasteboard->clearContents();
    pasteboard->setString(QStringLiteral("after"));
    EXPECT_EQ(pasteboard->changeCount(), count + 2);
    letGo();
    EXPECT_EQ(compositor->writes, writes + 1);
    pasteboard->clearContents();
    EXPECT_TRUE(eventually([&] { return compositor->writes == writes + 2; }));
    EXPECT_EQ(compositor->offered()->size(), 1) << "only what tells that it is ours";
}

TEST_F(WaylandPasteboardTest, ReadsWhatStaysWhenTheCompositorRefusesAWrite) {
    start();
    compositor->refusesWrites = true;
    compositor->copy({{text, "stays"}});
    pasteboard->setString(QStringLiteral("refused"));
    EXPECT_TRUE(soonCopied(QStringLiteral("stays")));
}

// An exit and a clear look the same. Who has delivered the content and lives on has cleared it.
TEST_F(WaylandPasteboardTest, ContentSurvivesItsProgramButNotAClear) {
    enum class End { exit, lateExit, clear };
    for (const End end : {End::exit, End::lateExit, End::clear}) {
        std::optional<OwnerProcessOfTest> owner;
        compositor.emplace();
        compositor->copy({{text, {}}},
                         [&](const QByteArray&, FileDescriptor to) { owner.emplace(to, "kept"); });
        connectAndLook();
        EXPECT_TRUE(soonCopied(QStringLiteral("kept")));
        EXPECT_EQ(pasteboard->changeCount(), 0) << "it was there before the start";
        if (end == End::exit) {
            owner->exit();
        }
        compositor->empty();
        letGo();
        EXPECT_EQ(pasteboard->string(), QStringLiteral("kept"));
        if (end == End::lateExit) {
            owner->exit();
        }
        EXPECT_TRUE(eventually(
            [&] { return end == End::clear ? pasteboard->changeCount() == 1 : compositor->writes == 1; }));
        if (end == End::clear) {
            EXPECT_FALSE(pasteboard->string());
            EXPECT_EQ(compositor->writes, 0);
        } else {
            EXPECT_EQ(paste(text), "kept");
            EXPECT_EQ(pasteboard->changeCount(), 0);
            compositor->empty(); // somebody clears what is ours now
            EXPECT_TRUE(soonCounted(1));
            EXPECT_FALSE(compositor->offered());
        }
        pasteboard.reset();
    }
}

// A crash closes one descriptor after the other.
TEST_F(WaylandPasteboardTest, WhoIsExitingAtTheEndOfTheContentMayHaveCrashed) {
    start();
    std::optional<OwnerProcessOfTest> owner;
    const auto copyFromExiting = [&](const QByteArray& bytes) {
        owner.reset();
        compositor->copy({{text, {}}}, [&](const QByteArray&, FileDescriptor to) {
            owner.emplace(to, bytes, OwnerProcessOfTest::Then::isExiting);
        });
        EXPECT_TRUE(eventually([&] { return owner.has_value(); }));
        letGo(); // the end of the content is seen,
        letGo(); // and whether it is still offered
        letGo();
    };
    copyFromExiting("the beginning of s");
    compositor->empty();
    EXPECT_TRUE(soonCounted(1));
    EXPECT_FALSE(pasteboard->string());
    // It is another one's helper, since the content is still offered when it has gone.
    copyFromExiting("all of it");
    owner->exit();
    EXPECT_TRUE(soonCopied(QStringLiteral("all of it")));
    // It goes on without its first thread.
    pasteboard.reset();
    limits.silence = 60ms;
    start();
    copyFromExiting("also");
    EXPECT_TRUE(soonCopied(QStringLiteral("also")));
}

// A tool that is started in order to copy ends because of the clear.
TEST_F(WaylandPasteboardTest, WhatAYoungProcessHasCopiedStaysCleared) {
    start();
    std::optional<OwnerProcessOfTest> tool;
    compositor->copy({{text, {}}},
                     [&](const QByteArray&, FileDescriptor to) { tool.emplace(to, "password"); });
    ASSERT_TRUE(soonCopied(QStringLiteral("password")));
    tool->exit();
    compositor->empty();
    EXPECT_TRUE(soonCounted(2));
    EXPECT_FALSE(pasteboard->string());
    EXPECT_EQ(compositor->writes, 0);
}

TEST_F(WaylandPasteboardTest, ProgramsThatPasteAndDoNotReadHoldNothingUp) {
    start();
    pasteboard->setString(QString(2'000'000, QLatin1Char('x')));
    letGo();
    const int before = openDescriptors();
    std::vector<FileDescriptor> hanging;
    for (int i = 0; i < 300; ++i) {
        hanging.push_back(compositor->ask(text));
        if (i % 20 == 0) {
            letGo();
        }
    }
    letGo();
    EXPECT_EQ(paste(text).size(), 2'000'000);
    EXPECT_LT(openDescriptors() - before, 300 + 150);
    hanging.clear();
    EXPECT_TRUE(eventually([&] { return openDescriptors() <= before; }));
}

TEST_F(WaylandPasteboardTest, AnOwnerThatAnnouncesTheSameWithoutEndMakesOneCopy) {
    start();
    for (int i = 0; i < 40; ++i) {
        compositor->copy({{text, "again"}});
        letGo();
        EXPECT_TRUE(i > 0 || soonCopied(QStringLiteral("again")));
    }
    EXPECT_TRUE(eventually([&] { return compositor->requests.size() > 1; })) << "only the content tells";
    letGo();
    letGo();
    EXPECT_EQ(pasteboard->changeCount(), 1);
    EXPECT_LT(compositor->requests.size(), 10);
    // A copy just after another one is late, and not lost; nor is one that cuts the reading of another short.
    pasteboard.reset();
    connectAndLook();
    ASSERT_TRUE(soonCopied(QStringLiteral("again")));
    FileDescriptor kept;
    compositor->copy({{text, {}}}, [&](const QByteArray&, FileDescriptor to) { kept = std::move(to); });
    EXPECT_TRUE(eventually([&] { return kept.isOpen(); }));
    compositor->copy({{text, "again"}});
    EXPECT_TRUE(soonCounted(1));
    compositor->copy({{text, "other"}});
    EXPECT_TRUE(soonCounted(2));
    EXPECT_EQ(pasteboard->string(), QStringLiteral("other"));
}

TEST_F(WaylandPasteboardTest, ContentMovesToTheSeatThatComesWhenOneHasGone) {
    start();
    compositor->copy({{text, "kept"}});
    ASSERT_TRUE(soonCopied(QStringLiteral("kept")));
    for (const bool isAnnouncedBefore : {true, false}) {
        if (isAnnouncedBefore) {
            compositor->finishDevice();
            letGo();
        }
        compositor->removeSeat();
        letGo();
        pasteboard->image(); // nothing to crash on
        compositor->addSeat();
        EXPECT_TRUE(eventually([&] { return compositor->offered().has_value(); }));
        EXPECT_EQ(paste(text), "kept");
        EXPECT_EQ(pasteboard->changeCount(), 1);
    }
}

TEST_F(WaylandPasteboardTest, TellsOnceThatTheCompositorIsGone) {
    start();
    int told = 0;
    QObject::connect(connection.get(), &WaylandConnection::disconnected, [&] { ++told; });
    const auto captured = std::make_shared<int>();
    connection->sync([captured] { ADD_FAILURE() << "nobody has answered"; });
    compositor->disconnect();
    EXPECT_TRUE(eventually([&] { return told > 0; }));
    pasteboard->setString(QStringLiteral("into the void"));
    bool isHandedOver = false;
    pasteboard->handOver([&] { isHandedOver = true; });
    EXPECT_TRUE(eventually([&] { return isHandedOver; }));
    EXPECT_EQ(pasteboard->string(), QStringLiteral("into the void"));
    EXPECT_EQ(told, 1);
    pasteboard.reset();
    connection.reset();
    EXPECT_EQ(captured.use_count(), 1) << "what waited for an answer is kept";
}

} // namespace corvatto::test
