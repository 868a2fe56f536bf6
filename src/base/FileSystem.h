// The file operations that the history needs. Each returns its failure as a value with the system's own
// message.
#pragma once

#include <QByteArray>
#include <QString>

#include <functional>
#include <optional>

namespace corvatto {

// Why a file operation failed.
struct FileError {
    int code = 0; // errno, or 0 when the system gave none
    QString path;
    QString localizedDescription; // one phrase for people, such as "Permission denied"

    // The whole error as text: phrase, code and path.
    QString description() const;
};

// All paths are absolute. An absent result means success. Any thread.

// Creates the directory with its parents. An existing directory is success.
std::optional<FileError> createDirectories(const QString& path);

// Removes all rights of other users to a file or directory, if it exists and is ours.
void makePrivate(const QString& path);

// Writes to a temporary file beside `path`, syncs it, moves it into place and syncs the directory, so that
// `path` holds either its old content or all of `bytes`, also after a loss of power. After success it is
// `bytes`. `mayReplace` is asked once the slow part is done; when it says no, the old content stays and the
// error is ECANCELED.
std::optional<FileError> writeFileAtomically(const QString& path, const QByteArray& bytes,
                                             const std::function<bool()>& mayReplace = {});

std::optional<FileError> removeFile(const QString& path);

// Removes a directory with everything in it. Symbolic links inside are removed, not followed.
std::optional<FileError> removeDirectoryTree(const QString& path);

} // namespace corvatto
