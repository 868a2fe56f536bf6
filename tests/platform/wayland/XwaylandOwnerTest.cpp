// X programs behind what a Wayland compositor passes on.
#include "WaylandTest.h"
#include "platform/x11/X11Test.h"

#include <sys/socket.h>
#include <sys/un.h>

using namespace std::chrono_literals;

namespace corvatto::test {
namespace {

const QByteArray secretMark = "x-kde-passwordManagerHint";

class XwaylandOwnerTest : public WaylandTest {
protected:
    XwaylandOwnerTest() {
        xPrograms = WaylandPasteboard::XPrograms::possible;
        start();
    }

    // The compositor's bridge passes a copy in an X program on, without the mark.
    void passOn(const Program::Flavours& flavours) {
        FakeCompositor::Flavours passed = flavours;
        passed.erase(secretMark);
        compositor->copy(passed);
    }
};

const QByteArray text = "UTF8_STRING";

} // namespace

TEST_F(XwaylandOwnerTest, AnXProgramThatDoesNotAnswerCountsAsSecret) {
    limits.silence = 100ms;
    pasteboard.reset();
    connectAndLook();
    XServer server;
    Program program(server.display);
    program.copy({{text, "hunter2"}, {secretMark, "secret"}});
    CapturedOutput output;
    passOn(program.flavours);
    EXPECT_TRUE(soonCounted(1));
    EXPECT_FALSE(pasteboard->string());
    EXPECT_EQ(compositor->requests, QByteArrayList());
    EXPECT_TRUE(output.text().contains("in time"));
}

// The compositor owns the X clipboard on behalf of Wayland programs.
TEST_F(XwaylandOwnerTest, TheCompositorItselfIsNotAsked) {
    XServer server;
    Program compositorsBridge(server.display);
    compositorsBridge.own("WM_S0", compositorsBridge.createMessageWindow());
    compositorsBridge.copy({{text, "x"}, {secretMark, "secret"}});
    compositor->copy({{text, "native"}});
    EXPECT_TRUE(soonCopied(QStringLiteral("native")));
}

TEST_F(XwaylandOwnerTest, ContentSurvivesAnXProgramButNotItsClear) {
    XServer server;
    const Program another(server.display); // without any, the server would start anew
    for (const bool exits : {true, false}) {
        std::optional<Program> program(server.display);
        pasteboard->setString(QStringLiteral("between")); // the next copy is no quick one
        letGo();
        program->copy({{text, "kept"}});
        passOn(program->flavours);
        const qint64 count = pasteboard->changeCount() + 1;
        ASSERT_TRUE(program->goUntil([&] { return pasteboard->changeCount() == count; }));
        const int writes = compositor->writes;
        if (exits) {
            program.reset();
        } else {
            program->own("CLIPBOARD", XCB_NONE);
        }
        compositor->empty();
        EXPECT_TRUE(eventually(
            [&] { return exits ? compositor->writes > writes : pasteboard->changeCount() > count; }));
        EXPECT_EQ(pasteboard->string().has_value(), exits);
        EXPECT_EQ(pasteboard->changeCount(), exits ? count : count + 1);
    }
}

// A compositor starts its X server for the first program that connects to it.
TEST_F(XwaylandOwnerTest, DoesNotStartTheXServer) {
    const FileDescriptor server(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    sockaddr_un address{AF_UNIX, {}};
    constexpr char path[] = "\0/tmp/.X11-unix/X4711";
    std::copy(std::begin(path), std::end(path), address.sun_path);
    const auto length = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + sizeof path - 1);
    ASSERT_EQ(::bind(server.number(), reinterpret_cast<const sockaddr*>(&address), length), 0);
    ASSERT_EQ(::listen(server.number(), 1), 0);
    qputenv("DISPLAY", ":4711");
    compositor->copy({{text, "native"}});
    EXPECT_TRUE(soonCopied(QStringLiteral("native")));
    EXPECT_LT(::accept(server.number(), nullptr, nullptr), 0) << "somebody has connected";
}

} // namespace corvatto::test
