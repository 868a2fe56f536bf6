// The lists of files that file managers put on the clipboard.
#pragma once

#include <QByteArray>
#include <QList>
#include <QUrl>

#include <limits>

namespace corvatto {

// The file URLs of a `text/uri-list`, `atMost` so many: a URL a line, comments and URLs of other schemes or
// hosts left out.
QList<QUrl> fileURLsFromUriList(const QByteArray& bytes,
                                qsizetype atMost = std::numeric_limits<qsizetype>::max());

// The file URLs of an `x-special/gnome-copied-files`: a first line "copy" or "cut", then a URL a line.
QList<QUrl> fileURLsFromGnomeCopiedFiles(const QByteArray& bytes,
                                         qsizetype atMost = std::numeric_limits<qsizetype>::max());

// The reverse, as file managers expect it.
QByteArray uriListFromFileURLs(const QList<QUrl>& urls);
QByteArray gnomeCopiedFilesFromFileURLs(const QList<QUrl>& urls);

} // namespace corvatto
