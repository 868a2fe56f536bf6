#include "app/SingleInstance.h"

#include "base/Diagnostics.h"
#include "base/FileSystem.h"
#include "command/InstanceRequest.h"

#include <QFile>
#include <QLocalSocket>

#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace corvatto {
namespace {

constexpr qint64 longestRequest = 64;

// Whether the process at the other end belongs to this user.
bool isOwnUser(int socket) {
    ucred peer{};
    socklen_t length = sizeof peer;
    return getsockopt(socket, SOL_SOCKET, SO_PEERCRED, &peer, &length) == 0 && peer.uid == getuid();
}

// Whether the process at the other end has closed its end.
bool isGivenUp(int socket) {
    pollfd state{socket, 0, 0};
    return poll(&state, 1, 0) == 1 && (state.revents & POLLHUP) != 0;
}

} // namespace

SingleInstance::SingleInstance(const std::string& directory)
    : m_directory(directory), m_lock(QFile::decodeName((directory + "/lock").c_str())) {
    m_lock.setStaleLockTime(0); // never by age; the lock of a process that has ended counts as free anyway
}

bool SingleInstance::becomePrimary() {
    const QString directory = QFile::decodeName(m_directory.c_str());
    if (const auto error = createDirectories(directory)) {
        printLine(
            QStringLiteral("[CorvattoApp] ERROR: Cannot create %1: %2").arg(directory, error->description()));
        return true; // two instances are better than none
    }
    if (!isOwnDirectory(m_directory)) {
        printLine(
            QStringLiteral("[CorvattoApp] ERROR: %1 is another user's, or a link; not used.").arg(directory));
        return true;
    }
    QFile::setPermissions(directory, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    return m_lock.tryLock(0);
}

void SingleInstance::listen(std::function<void(const QString& request)> handle) {
    if (!m_lock.isLocked()) {
        return;
    }
    m_handle = std::move(handle);
    m_server.setSocketOptions(QLocalServer::UserAccessOption);
    // A socket that is left over: we hold the lock, so its process has ended.
    const QString socketPath = QFile::decodeName(instanceSocket(m_directory).c_str());
    QLocalServer::removeServer(socketPath);
    if (!m_server.listen(socketPath)) {
        printLine(QStringLiteral("[CorvattoApp] ERROR: Cannot listen on %1: %2")
                      .arg(socketPath, m_server.errorString()));
        return;
    }
    QObject::connect(&m_server, &QLocalServer::newConnection, &m_server, [this] {
        while (QLocalSocket* socket = m_server.nextPendingConnection()) {
            QObject::connect(socket, &QLocalSocket::disconnected, socket, &QObject::deleteLater);
            if (!isOwnUser(static_cast<int>(socket->socketDescriptor()))) {
                socket->abort();
                socket->deleteLater();
                continue;
            }
            QObject::connect(socket, &QLocalSocket::readyRead, &m_server, [this, socket] { answer(socket); });
            answer(socket); // the request may have arrived before the connection above was made
        }
    });
}

void SingleInstance::answer(QLocalSocket* socket) {
    if (socket->bytesAvailable() > longestRequest) {
        socket->abort();
        return;
    }
    if (!socket->canReadLine()) {
        return;
    }
    // The sender has told its user that nothing was done.
    if (isGivenUp(static_cast<int>(socket->socketDescriptor()))) {
        return;
    }
    const QString request = QString::fromUtf8(socket->readLine(longestRequest)).trimmed();
    if (request == QLatin1String(statusRequest.data(), statusRequest.size())) {
        socket->write(m_status.toUtf8() + '\n');
    }
    socket->write(doneLine.data(), doneLine.size());
    socket->flush();
    socket->disconnectFromServer();
    m_handle(request);
}

} // namespace corvatto
