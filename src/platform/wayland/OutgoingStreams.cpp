#include "platform/wayland/OutgoingStreams.h"

#include <algorithm>
#include <cerrno>

#include <fcntl.h>

namespace corvatto {
namespace {

constexpr std::size_t mostStreams = 128;
constexpr qsizetype bytesPerTurn = qsizetype{1} << 20;

} // namespace

void OutgoingStream::send(const QByteArray& bytes, std::chrono::milliseconds silenceLimit) {
    m_bytes = bytes;
    const int number = m_theirs.number();
    ::fcntl(number, F_SETFL, ::fcntl(number, F_GETFL) | O_NONBLOCK);
    m_writable.emplace(number, QSocketNotifier::Write);
    connect(&*m_writable, &QSocketNotifier::activated, this, &OutgoingStream::write);
    m_silence.setSingleShot(true);
    m_silence.setInterval(silenceLimit);
    connect(&m_silence, &QTimer::timeout, this, &OutgoingStream::ended);
    m_silence.start();
}

void OutgoingStream::write() {
    qsizetype left = bytesPerTurn;
    while (m_sent < m_bytes.size() && left > 0) {
        const qsizetype length = std::min(left, m_bytes.size() - m_sent);
        const ssize_t written =
            ::write(m_theirs.number(), m_bytes.constData() + m_sent, static_cast<std::size_t>(length));
        if (written < 0 && errno == EINTR) {
            continue;
        }
        if (written < 0 && errno == EAGAIN) {
            return;
        }
        if (written < 0) {
            break; // the reader has gone
        }
        m_sent += written;
        left -= written;
        m_silence.start();
    }
    if (m_sent == m_bytes.size() || left > 0) {
        Q_EMIT ended(); // destroys this
    }
}

OutgoingStream& OutgoingStreams::open(FileDescriptor theirs) {
    if (m_streams.size() >= mostStreams) {
        m_streams.pop_front();
    }
    const auto stream =
        m_streams.insert(m_streams.end(), std::make_unique<OutgoingStream>(std::move(theirs)));
    QObject::connect(stream->get(), &OutgoingStream::ended, stream->get(),
                     [this, stream] { m_streams.erase(stream); });
    return **stream;
}

} // namespace corvatto
