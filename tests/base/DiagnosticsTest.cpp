#include "base/Diagnostics.h"

#include <QtGlobal>

#include <gtest/gtest.h>

#include <array>
#include <cstdlib>

#include <fcntl.h>
#include <sys/socket.h>
#include <termios.h>
#include <unistd.h>

namespace corvatto {
namespace {

// The end that is written to; its reader is there, but takes nothing more.
int blockedPipe() {
    std::array<int, 2> ends{};
    EXPECT_EQ(pipe(ends.data()), 0);
    const std::array<char, 4096> page{};
    for (int pages = fcntl(ends[1], F_GETPIPE_SZ) / 4096; pages > 0; --pages) {
        EXPECT_EQ(write(ends[1], page.data(), page.size()), 4096);
    }
    return ends[1];
}

int blockedSocket() {
    std::array<int, 2> ends{};
    EXPECT_EQ(socketpair(AF_UNIX, SOCK_STREAM, 0, ends.data()), 0);
    while (send(ends[1], "line", 4, MSG_DONTWAIT) > 0) {
    }
    return ends[1];
}

int stoppedTerminal() { // as by Ctrl+S
    const int master = posix_openpt(O_RDWR | O_NOCTTY);
    EXPECT_TRUE(grantpt(master) == 0 && unlockpt(master) == 0);
    const int terminal = open(ptsname(master), O_RDWR | O_NOCTTY);
    EXPECT_EQ(tcflow(terminal, TCOOFF), 0);
    return terminal;
}

TEST(Diagnostics, NeverWaitForWhoeverReadsThem) {
    for (const auto blocked : {blockedPipe, blockedSocket, stoppedTerminal}) {
        const auto print = [blocked] {
            const int descriptor = blocked();
            const int flags = fcntl(descriptor, F_GETFL);
            dup2(descriptor, STDOUT_FILENO);
            dup2(descriptor, STDERR_FILENO);
            alarm(5);
            printLine(u"line");
            printQtMessagesWithoutWaiting();
            qWarning("message");
            _exit(fcntl(descriptor, F_GETFL) == flags ? 0 : 1); // which others share
        };
        EXPECT_EXIT(print(), ::testing::ExitedWithCode(0), "");
    }
}

} // namespace
} // namespace corvatto
