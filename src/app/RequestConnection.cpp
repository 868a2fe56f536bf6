#include "app/RequestConnection.h"

#include <array>
#include <cerrno>
#include <utility>

#include <sys/socket.h>

namespace corvatto {
namespace {

constexpr qsizetype longestRequest = 64;

} // namespace

RequestConnection::RequestConnection(FileDescriptor client, const Arrived& arrived, QObject* parent)
    : QObject(parent), m_client(std::move(client)), m_arrived(arrived),
      m_notifier(m_client.number(), QSocketNotifier::Read) {
    connect(&m_notifier, &QSocketNotifier::activated, this, &RequestConnection::read);
}

void RequestConnection::read() {
    std::array<char, longestRequest + 1> bytes;
    const ssize_t length = recv(m_client.number(), bytes.data(), bytes.size(), 0);
    if (length < 0 && (errno == EAGAIN || errno == EINTR)) {
        return;
    }
    if (length > 0) {
        m_received.append(bytes.data(), length);
    }
    const qsizetype end = m_received.indexOf('\n');
    if (length <= 0 || m_received.size() > longestRequest) {
        close();
    } else if (end >= 0) {
        m_notifier.setEnabled(false); // one request is all
        m_arrived(*this, QString::fromUtf8(m_received.left(end)).trimmed());
    }
}

bool RequestConnection::answer(const QByteArray& text) {
    // A few words always fit into a socket that nothing was sent over yet.
    const ssize_t sent =
        send(m_client.number(), text.constData(), static_cast<std::size_t>(text.size()), MSG_NOSIGNAL);
    close();
    return sent == text.size();
}

void RequestConnection::close() {
    m_notifier.setEnabled(false);
    m_client.close();
    deleteLater();
}

} // namespace corvatto
