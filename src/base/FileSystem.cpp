#include "base/FileSystem.h"

#include <QFile>
#include <QSaveFile>

#include <cerrno>
#include <cstring>
#include <filesystem>

#include <fcntl.h>
#include <unistd.h>

namespace corvatto {
namespace {

std::filesystem::path nativePath(const QString& path) {
    return std::filesystem::path(QFile::encodeName(path).toStdString());
}

FileError errorFrom(const std::error_code& error, const QString& path) {
    return {error.value(), path, QString::fromLocal8Bit(error.message())};
}

FileError errorFrom(const QSaveFile& file, int systemError, const QString& path) {
    if (systemError != 0) {
        return {systemError, path, QString::fromLocal8Bit(std::strerror(systemError))};
    }
    return {0, path, file.errorString()};
}

// A file system that does not support the operation counts as synchronised.
bool sync(int descriptor) {
    return fsync(descriptor) == 0 || errno == EINVAL || errno == ENOTSUP;
}

// A new name is on the disk only once its directory has been synchronised.
bool syncDirectory(const std::filesystem::path& path) {
    const int descriptor = open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor < 0) {
        return errno == EACCES; // writable but not readable: it cannot be opened
    }
    const bool succeeded = sync(descriptor);
    close(descriptor);
    return succeeded;
}

} // namespace

QString FileError::description() const {
    return QStringLiteral("%1 (code %2, path %3)").arg(localizedDescription, QString::number(code), path);
}

std::optional<FileError> createDirectories(const QString& path) {
    std::error_code error;
    const std::filesystem::path directory = nativePath(path);
    const bool isNew = std::filesystem::create_directories(directory, error);
    if (error) {
        return errorFrom(error, path);
    }
    if (isNew) {
        syncDirectory(directory.parent_path()); // the new directory is usable even if this fails
    }
    return std::nullopt;
}

void makePrivate(const QString& path) {
    using std::filesystem::perms;
    std::error_code error;
    std::filesystem::permissions(nativePath(path), perms::group_all | perms::others_all,
                                 std::filesystem::perm_options::remove, error);
}

std::optional<FileError> writeFileAtomically(const QString& path, const QByteArray& bytes,
                                             const std::function<bool()>& mayReplace) {
    errno = 0;
    QSaveFile file(path);
    // Otherwise QSaveFile writes in place when the directory refuses new files, and a crash leaves half a
    // file.
    file.setDirectWriteFallback(false);
    // commit() syncs too, but ignores failures, by which some file systems report a full disk.
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size() || !file.flush() ||
        !sync(file.handle())) {
        return errorFrom(file, errno, path);
    }
    if (mayReplace && !mayReplace()) {
        return FileError{ECANCELED, path, QString::fromLocal8Bit(std::strerror(ECANCELED))};
    }
    if (!file.commit() || !syncDirectory(nativePath(path).parent_path())) {
        return errorFrom(file, errno, path);
    }
    return std::nullopt;
}

std::optional<FileError> removeFile(const QString& path) {
    std::error_code error;
    std::filesystem::remove(nativePath(path), error);
    if (error) {
        return errorFrom(error, path);
    }
    return std::nullopt;
}

std::optional<FileError> removeDirectoryTree(const QString& path) {
    std::error_code error;
    std::filesystem::remove_all(nativePath(path), error);
    if (error) {
        return errorFrom(error, path);
    }
    return std::nullopt;
}

} // namespace corvatto
