// Paths of files, which are bytes to the system, and how they stand in texts and addresses.
#pragma once

#include <QByteArray>
#include <QString>
#include <QUrl>

namespace corvatto {

// The file: address of an absolute path, whatever bytes it holds, and back. A path without bytes beyond ASCII
// and without reserved characters is the same in both.
QUrl fileUrl(const QByteArray& path);
QByteArray pathOf(const QUrl& fileUrl);

// A path as one line of text: the path itself, or its file: address where the path is not valid UTF-8 or
// holds a line feed. No absolute path begins like an address, so that nativePath() gives every path back.
QString pathLine(const QByteArray& path);
QByteArray nativePath(const QString& pathLine);

// The name of the file at the end of the path, for people: invalid bytes are replaced, line feeds become
// spaces.
QString displayName(const QString& pathLine);

// Whether anything is there. A symbolic link counts as what it leads to.
bool pathExists(const QString& pathLine);

} // namespace corvatto
