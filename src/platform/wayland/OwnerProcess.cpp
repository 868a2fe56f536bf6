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

// A field of what the kernel tells of the process, counted from 1; null when there is none.
QByteArray statusField(pid_t process, qsizetype number) {
    QFile file(QStringLiteral("/proc/%1/stat").arg(process));
    if (!file.open(QIODevice::ReadOnly)) {
        return {};
    }
    // The name in the second field may hold anything; it ends at the last parenthesis.
    const QByteArray line = file.readAll();
    return line.mid(line.lastIndexOf(')') + 2).split(' ').value(number - 3);
}

std::optional<duration<double>> age(pid_t process) {
    const QByteArray start = statusField(process, 22); // in ticks since the machine started
    timespec now{};
    if (start.isEmpty() || ::clock_gettime(CLOCK_BOOTTIME, &now) != 0) {
        return std::nullopt;
    }
    const double startedAt = start.toDouble() / static_cast<double>(::sysconf(_SC_CLK_TCK));
    return std::chrono::seconds(now.tv_sec) + std::chrono::nanoseconds(now.tv_nsec) -
           duration<double>(startedAt);
}

// The kernel sets this before it closes what the process has open.
bool isExiting(pid_t process) {
    constexpr qulonglong exiting = 0x4; // PF_EXITING, among the kernel's flags
    return (statusField(process, 9).toULongLong() & exiting) != 0;
}

} // namespace

// Closed when the process has exited, or cannot be watched.
FileDescriptor OwnerProcess::openLiving(pid_t process) {
    if (process <= 0) {
        return {}; // of a namespace that we cannot see
    }
    FileDescriptor watched(::pidfd_open(process, 0));
    pollfd end{watched.number(), POLLIN, 0};
    return watched.isOpen() && ::poll(&end, 1, 0) == 0 ? std::move(watched) : FileDescriptor();
}

std::unique_ptr<OwnerProcess> OwnerProcess::watch(pid_t process,
                                                  std::optional<std::chrono::milliseconds> sinceCopy) {
    FileDescriptor watched = openLiving(process);
    if (!watched.isOpen()) {
        return nullptr;
    }
    if (const auto lived = age(process); sinceCopy && !(lived && *lived - *sinceCopy >= youth)) {
        return nullptr;
    }
    return std::unique_ptr<OwnerProcess>(new OwnerProcess(std::move(watched)));
}

std::unique_ptr<OwnerProcess> OwnerProcess::watchExiting(pid_t process) {
    FileDescriptor watched = openLiving(process);
    return watched.isOpen() && isExiting(process)
               ? std::unique_ptr<OwnerProcess>(new OwnerProcess(std::move(watched)))
               : nullptr;
}

OwnerProcess::OwnerProcess(FileDescriptor process)
    : m_process(std::move(process)), m_end(m_process.number(), QSocketNotifier::Read) {
    QObject::connect(&m_end, &QSocketNotifier::activated, &m_end, [this] {
        m_end.setEnabled(false);
        exited();
    });
}

} // namespace corvatto
