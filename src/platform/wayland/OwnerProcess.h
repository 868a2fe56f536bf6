// The process that has delivered the content of the clipboard.
#pragma once

#include "base/FileDescriptor.h"
#include "platform/wayland/OwnerLife.h"

#include <QSocketNotifier>

#include <chrono>
#include <memory>
#include <optional>

#include <sys/types.h>

namespace corvatto {

// Main thread.
class OwnerProcess : public OwnerLife {
public:
    // Null when its end would tell nothing: when it cannot be watched; when it is gone already, as the helper
    // processes of some programs are; and when it was started in order to copy, which it announced
    // `sinceCopy` ago. Such a tool ends as soon as somebody clears what it offers, and for that reason.
    // Without `sinceCopy` it may be of any age.
    static std::unique_ptr<OwnerProcess> watch(pid_t process,
                                               std::optional<std::chrono::milliseconds> sinceCopy);

    // Null unless it is exiting, and has not exited yet: some of what it had open may be closed, and some
    // not.
    static std::unique_ptr<OwnerProcess> watchExiting(pid_t process);

private:
    static FileDescriptor openLiving(pid_t process);

    explicit OwnerProcess(FileDescriptor process);

    FileDescriptor m_process;
    QSocketNotifier m_end;
};

} // namespace corvatto
