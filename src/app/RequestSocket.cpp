#include "app/RequestSocket.h"

#include "command/InstanceRequest.h"

#include <QTimer>

#include <cerrno>
#include <utility>

#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

namespace corvatto {
namespace {

constexpr int longestQueue = 50;
constexpr std::chrono::seconds restTime{1};

// Whether the process at the other end belongs to this user.
bool isOwnUser(const FileDescriptor& socket) {
    ucred peer{};
    socklen_t length = sizeof peer;
    return getsockopt(socket.number(), SOL_SOCKET, SO_PEERCRED, &peer, &length) == 0 && peer.uid == getuid();
}

} // namespace

RequestSocket::~RequestSocket() {
    if (!m_path.empty()) {
        unlink(m_path.c_str());
    }
}

std::error_code RequestSocket::listen(const std::string& path) {
    const auto address = socketAddress(path);
    if (!address) {
        return std::make_error_code(std::errc::filename_too_long);
    }
    unlink(path.c_str());
    FileDescriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    // Nobody can connect before the last of these.
    if (!socket.isOpen() ||
        bind(socket.number(), reinterpret_cast<const sockaddr*>(&*address), sizeof *address) != 0 ||
        chmod(path.c_str(), S_IRUSR | S_IWUSR) != 0 || ::listen(socket.number(), longestQueue) != 0) {
        return {errno, std::generic_category()};
    }
    m_path = path;
    m_socket = std::move(socket);
    m_notifier = std::make_unique<QSocketNotifier>(m_socket.number(), QSocketNotifier::Read);
    connect(m_notifier.get(), &QSocketNotifier::activated, this, &RequestSocket::accept);
    return {};
}

void RequestSocket::accept() {
    FileDescriptor client(accept4(m_socket.number(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK));
    if (!client.isOpen()) {
        if (errno != EAGAIN && errno != EINTR && errno != ECONNABORTED) {
            rest();
        }
    } else if (isOwnUser(client)) {
        new RequestConnection(std::move(client), m_arrived, this);
    }
}

// Without descriptors or memory for a client, which keeps waiting and would be announced without a pause.
void RequestSocket::rest() {
    m_notifier->setEnabled(false);
    QTimer::singleShot(restTime, m_notifier.get(), [this] { m_notifier->setEnabled(true); });
}

} // namespace corvatto
