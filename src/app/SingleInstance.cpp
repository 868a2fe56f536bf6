#include "app/SingleInstance.h"

#include "base/Diagnostics.h"
#include "base/FileSystem.h"
#include "command/InstanceRequest.h"

#include <QFile>

#include <system_error>
#include <utility>

namespace corvatto {

SingleInstance::SingleInstance(const std::string& directory)
    : m_directory(directory), m_lock(QFile::decodeName((directory + "/lock").c_str())),
      m_socket([this](RequestConnection& client, const QString& request) { answer(client, request); }) {
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
    // A socket that is left over is replaced: we hold the lock, so its process has ended.
    const std::string path = instanceSocket(m_directory);
    if (const std::error_code error = m_socket.listen(path)) {
        printLine(QStringLiteral("[CorvattoApp] ERROR: Cannot listen on %1: %2")
                      .arg(QFile::decodeName(path.c_str()), QString::fromStdString(error.message())));
    }
}

void SingleInstance::answer(RequestConnection& client, const QString& request) {
    const bool asksForStatus = request == QLatin1String(statusRequest.data(), statusRequest.size());
    const QByteArray status = asksForStatus ? m_status.toUtf8() + '\n' : QByteArray();
    // The rest comes after the answer, because it may take long.
    if (client.answer(status + doneLine.data())) {
        m_handle(request);
    }
}

} // namespace corvatto
