#include "platform/wayland/IncomingStream.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <utility>

#include <fcntl.h>
#include <sys/socket.h>

namespace corvatto {
namespace {

constexpr qsizetype bytesPerRead = qsizetype{256} << 10;
constexpr int readsPerTurn = 4; // so that a fast program does not keep the event loop

} // namespace

IncomingStream::Ends IncomingStream::newEnds() {
    std::array<int, 2> numbers{};
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, numbers.data()) != 0) {
        return {};
    }
    Ends ends{FileDescriptor(numbers[0]), FileDescriptor(numbers[1])};
    // Our end only: the other side may count on writes that wait.
    ::fcntl(ends.ours.number(), F_SETFL, O_NONBLOCK);
    const int on = 1;
    ::setsockopt(ends.ours.number(), SOL_SOCKET, SO_PASSCRED, &on, sizeof on);
    return ends;
}

IncomingStream::IncomingStream(FileDescriptor ours, qint64 byteLimit, std::chrono::milliseconds silenceLimit,
                               Done done)
    : m_ours(std::move(ours)), m_byteLimit(byteLimit), m_done(std::move(done)),
      m_readable(m_ours.number(), QSocketNotifier::Read) {
    QObject::connect(&m_readable, &QSocketNotifier::activated, &m_readable, [this] { read(); });
    m_silence.setSingleShot(true);
    m_silence.setInterval(silenceLimit);
    m_silence.callOnTimeout([this] { finish(TransferOutcome::timedOut); });
    m_silence.start();
}

void IncomingStream::read() {
    for (int i = 0; i < readsPerTurn; ++i) {
        const qsizetype before = m_bytes.size();
        m_bytes.resize(before + bytesPerRead);
        iovec target{m_bytes.data() + before, static_cast<std::size_t>(bytesPerRead)};
        alignas(cmsghdr) std::array<char, CMSG_SPACE(sizeof(ucred))> credentials{};
        msghdr message{};
        message.msg_iov = &target;
        message.msg_iovlen = 1;
        message.msg_control = credentials.data();
        message.msg_controllen = credentials.size();
        const ssize_t length = ::recvmsg(m_ours.number(), &message, MSG_CMSG_CLOEXEC);
        const int error = errno;
        m_bytes.resize(before + std::max<ssize_t>(length, 0));
        if (length < 0 && error == EINTR) {
            continue;
        }
        if (length < 0 && error == EAGAIN) {
            return;
        }
        if (length <= 0) {
            finish(length == 0 && !m_bytes.isEmpty() ? TransferOutcome::complete : TransferOutcome::refused);
            return;
        }
        if (m_bytes.size() > m_byteLimit) {
            finish(TransferOutcome::tooLarge);
            return;
        }
        noteSender(message);
        m_silence.start();
    }
}

void IncomingStream::noteSender(const msghdr& message) {
    const cmsghdr* header = CMSG_FIRSTHDR(&message);
    if (header == nullptr || header->cmsg_level != SOL_SOCKET || header->cmsg_type != SCM_CREDENTIALS) {
        return;
    }
    ucred sender{};
    std::memcpy(&sender, CMSG_DATA(header), sizeof sender);
    m_hasSeveralSenders |= m_sender && *m_sender != sender.pid;
    m_sender = sender.pid;
}

void IncomingStream::finish(TransferOutcome outcome) {
    m_readable.setEnabled(false);
    m_silence.stop();
    m_ours.close();
    if (outcome != TransferOutcome::complete) {
        m_bytes = QByteArray();
    }
    const Done done = std::move(m_done);
    done({outcome, std::move(m_bytes), m_hasSeveralSenders ? std::nullopt : m_sender});
}

} // namespace corvatto
