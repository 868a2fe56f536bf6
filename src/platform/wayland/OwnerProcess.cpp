#include "platform/wayland/OwnerProcess.h"

#include <QFile>

#include <ctime>

#include <poll.h>
extern "C" { // which the header of glibc 2.36 lacks
#include <sys/pidfd.h>
}

namespace corvatto {
namespace {

using std::chrono::duration;

// Nobody starts a program and copies something in it within this time.
constexpr std::chrono::seconds youth{3};

std::optional<duration<double>> age(pid_t process) {
    QFile file(QStringLiteral("/proc/%1/stat").arg(process));
    if (!file.open(QIODevice::ReadOnly)) {
        return std::nullopt;
    }
    // The name in the second field may hold anything; it ends at the last parenthesis. The start is the 22nd
    // field, in ticks since the machine started.
    const QByteArray line = file.readAll();
    constexpr qsizetype startAfterName = 19;
    const QByteArrayList fields = line.mid(line.lastIndexOf(')') + 2).split(' ');
    timespec now{};
    if (fields.size() <= startAfterName || ::clock_gettime(CLOCK_BOOTTIME, &now) != 0) {
        return std::nullopt;
    }
    const double startedAt = fields[startAfterName].toDouble() / static_cast<double>(::sysconf(_SC_CLK_TCK));
    return std::chrono::seconds(now.tv_sec) + std::chrono::nanoseconds(now.tv_nsec) -
           duration<double>(startedAt);
}

} // namespace

std::unique_ptr<OwnerProcess> OwnerProcess::watch(pid_t process,
                                                  std::optional<std::chrono::milliseconds> sinceCopy) {
    if (process <= 0) {
        return nullptr; // of a namespace that we cannot see
    }
    FileDescriptor watched(::pidfd_open(process, 0));
    if (!watched.isOpen()) {
        return nullptr;
    }
    pollfd end{watched.number(), POLLIN, 0};
    if (::poll(&end, 1, 0) != 0) {
        return nullptr;
    }
    if (const auto lived = age(process); sinceCopy && !(lived && *lived - *sinceCopy >= youth)) {
        return nullptr;
    }
    return std::unique_ptr<OwnerProcess>(new OwnerProcess(std::move(watched)));
}

OwnerProcess::OwnerProcess(FileDescriptor process)
    : m_process(std::move(process)), m_end(m_process.number(), QSocketNotifier::Read) {
    QObject::connect(&m_end, &QSocketNotifier::activated, &m_end, [this] {
        m_end.setEnabled(false);
        exited();
    });
}

} // namespace corvatto
