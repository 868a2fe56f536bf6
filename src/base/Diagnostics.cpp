#include "base/Diagnostics.h"

#include <QByteArray>
#include <QString>

#include <array>
#include <cstdio>

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

namespace corvatto {
namespace {

// Opens the pipe or terminal behind `descriptor` anew: O_NONBLOCK on the descriptor itself would reach every
// process that shares it, such as the shell. -1 when that is not possible.
int openWithoutWaiting(int descriptor) {
    std::array<char, 32> path{};
    std::snprintf(path.data(), path.size(), "/proc/self/fd/%d", descriptor);
    return open(path.data(), O_WRONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
}

void writeWithoutWaiting(int descriptor, const QByteArray& bytes) {
    const auto size = static_cast<std::size_t>(bytes.size());
    struct stat status {};
    if (fstat(descriptor, &status) != 0) {
        return;
    }
    [[maybe_unused]] ssize_t written = 0;
    if (S_ISSOCK(status.st_mode)) {
        written = send(descriptor, bytes.constData(), size, MSG_DONTWAIT | MSG_NOSIGNAL);
        return;
    }
    if (S_ISREG(status.st_mode)) { // a second descriptor would have a position of its own
        written = write(descriptor, bytes.constData(), size);
        return;
    }
    if (const int own = openWithoutWaiting(descriptor); own >= 0) {
        written = write(own, bytes.constData(), size);
        close(own);
        return;
    }
    // Another user's terminal, as after `su`. Writing waits only if it has room for a part of the line.
    pollfd output{descriptor, POLLOUT, 0};
    if (poll(&output, 1, 0) == 1 && (output.revents & POLLOUT) != 0) {
        written = write(descriptor, bytes.constData(), size);
    }
}

} // namespace

void printLine(QStringView line) {
    writeWithoutWaiting(STDOUT_FILENO, line.toUtf8() + '\n');
}

void printQtMessagesWithoutWaiting() {
    qInstallMessageHandler([](QtMsgType type, const QMessageLogContext& context, const QString& message) {
        writeWithoutWaiting(STDERR_FILENO, qFormatLogMessage(type, context, message).toUtf8() + '\n');
    });
}

} // namespace corvatto
