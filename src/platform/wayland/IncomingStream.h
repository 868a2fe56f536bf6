// The bytes of one flavour on their way from the program that offers it, with a limit on their size and on
// the program's silence, both held while they come.
//
// They come through a socket, not a pipe: with each piece the kernel tells who has sent it. And a socket
// takes as much as our own text fields hold before it makes their program wait, which is ours, and busy.
#pragma once

#include "base/FileDescriptor.h"
#include "platform/ClipboardReadPlan.h"

#include <QSocketNotifier>
#include <QTimer>

#include <functional>
#include <optional>

#include <sys/types.h>

struct msghdr;

namespace corvatto {

// Main thread. The stream ends with exactly one call of its callback, unless it is destroyed before. The
// callback may destroy the stream.
class IncomingStream {
public:
    struct Result {
        // Complete means that the other side has closed its end: at the end of the content, or because it has
        // crashed. Refused: the other side sent nothing, or has gone.
        TransferOutcome outcome;
        QByteArray bytes;                 // null unless complete
        std::optional<pid_t> sender = {}; // the process that sent all of them
    };
    using Done = std::function<void(Result result)>;

    // Reads from `ours`, which does not block.
    IncomingStream(FileDescriptor ours, qint64 byteLimit, std::chrono::milliseconds silenceLimit, Done done);

    struct Ends {
        FileDescriptor ours;
        FileDescriptor theirs;
    };
    // Both closed when there are no descriptors left.
    static Ends newEnds();

private:
    void read();
    void noteSender(const msghdr& message);
    void finish(TransferOutcome outcome);

    FileDescriptor m_ours;
    qint64 m_byteLimit;
    Done m_done;
    QByteArray m_bytes;
    std::optional<pid_t> m_sender;
    bool m_hasSeveralSenders = false;
    QSocketNotifier m_readable;
    QTimer m_silence;
};

} // namespace corvatto
