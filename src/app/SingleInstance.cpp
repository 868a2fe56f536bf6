#include "app/SingleInstance.h"

#include "base/Diagnostics.h"
#include "base/FileSystem.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLocalSocket>

#include <algorithm>
#include <array>
#include <cerrno>

#include <poll.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <sys/un.h>
#include <unistd.h>

namespace corvatto {
namespace {

constexpr time_t answerSeconds = 5;
constexpr qint64 longestRequest = 64;
// Of the path of the directory. The socket's own name is longer for a moment, while QLocalServer creates it.
constexpr std::size_t longestDirectory = sizeof sockaddr_un::sun_path - sizeof "/instance-XXXXXX/s";
const char done[] = "done\n";
constexpr std::size_t longestAnswer = 1024;
const QString statusRequest = QStringLiteral("status");

struct Descriptor {
    const int value;
    explicit Descriptor(int descriptor) : value(descriptor) {}
    ~Descriptor() { close(value); }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
};

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

SingleInstance::SingleInstance(const QString& directory)
    : m_directory(directory), m_socketPath(directory + QStringLiteral("/instance")),
      m_lock(directory + QStringLiteral("/lock")) {
    m_lock.setStaleLockTime(0); // never by age; the lock of a process that has ended counts as free anyway
}

QString SingleInstance::defaultDirectory() {
    const QString runtime = QFile::decodeName(qgetenv("XDG_RUNTIME_DIR"));
    const QString directory = runtime + QStringLiteral("/corvatto");
    if (runtime.startsWith(QLatin1Char('/')) && QFileInfo(runtime).isDir() &&
        QFile::encodeName(directory).size() <= qsizetype{longestDirectory}) {
        return directory;
    }
    return QDir::tempPath() + QStringLiteral("/corvatto-%1").arg(getuid());
}

bool SingleInstance::becomePrimary() {
    if (const auto error = createDirectories(m_directory)) {
        printLine(QStringLiteral("[CorvattoApp] ERROR: Cannot create %1: %2")
                      .arg(m_directory, error->description()));
        return true; // two instances are better than none
    }
    if (!isDirectoryOurs()) {
        return true;
    }
    QFile::setPermissions(m_directory, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    return m_lock.tryLock(0);
}

bool SingleInstance::isDirectoryOurs() const {
    const QFileInfo directory(m_directory);
    const bool isOurs = directory.ownerId() == getuid() && !directory.isSymLink();
    if (!isOurs) { // another user may have put it there to read our requests
        printLine(QStringLiteral("[CorvattoApp] ERROR: %1 is another user's, or a link; not used.")
                      .arg(m_directory));
    }
    return isOurs;
}

void SingleInstance::listen(std::function<void(const QString& request)> handle) {
    if (!m_lock.isLocked()) {
        return;
    }
    m_handle = std::move(handle);
    m_server.setSocketOptions(QLocalServer::UserAccessOption);
    // A socket that is left over: we hold the lock, so its process has ended.
    QLocalServer::removeServer(m_socketPath);
    if (!m_server.listen(m_socketPath)) {
        printLine(QStringLiteral("[CorvattoApp] ERROR: Cannot listen on %1: %2")
                      .arg(m_socketPath, m_server.errorString()));
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
    if (request == statusRequest) {
        socket->write(m_status.toUtf8() + '\n');
    }
    socket->write(done);
    socket->flush();
    socket->disconnectFromServer();
    m_handle(request);
}

SingleInstance::Answer SingleInstance::send(const QString& request) const {
    QByteArray text;
    return exchange(request, text);
}

SingleInstance::Answer SingleInstance::status(QString& status) const {
    QByteArray text;
    const Answer answer = exchange(statusRequest, text);
    status = QString::fromUtf8(text).trimmed();
    return answer;
}

SingleInstance::Answer SingleInstance::exchange(const QString& request, QByteArray& text) const {
    // Not with Qt's sockets, which need an application object and its event loop.
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    const QByteArray path = QFile::encodeName(m_socketPath);
    if (path.size() >= static_cast<qsizetype>(sizeof address.sun_path) || !QFileInfo::exists(m_directory) ||
        !isDirectoryOurs()) {
        return Answer::Nobody;
    }
    qstrncpy(address.sun_path, path.constData(), sizeof address.sun_path);
    const Descriptor descriptor(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    const timeval timeout{answerSeconds, 0};
    setsockopt(descriptor.value, SOL_SOCKET, SO_RCVTIMEO, &timeout, sizeof timeout);
    setsockopt(descriptor.value, SOL_SOCKET, SO_SNDTIMEO, &timeout, sizeof timeout);
    if (connect(descriptor.value, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
        // So many may be waiting already that there is no place to wait.
        return errno == EAGAIN ? Answer::None : Answer::Nobody;
    }
    const QByteArray line = request.toUtf8() + '\n';
    if (write(descriptor.value, line.constData(), static_cast<std::size_t>(line.size())) != line.size()) {
        return Answer::None;
    }
    std::array<char, longestAnswer> answer{};
    const ssize_t length = recv(descriptor.value, answer.data(), answer.size(), MSG_WAITALL); // to its end
    text = QByteArray(answer.data(), std::max(length, ssize_t{0}));
    if (!text.endsWith(done)) {
        return Answer::None;
    }
    text.chop(sizeof done - 1);
    return Answer::Done;
}

} // namespace corvatto
