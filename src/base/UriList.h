// The lists of files that file managers put on the clipboard.
#pragma once

#include <QByteArray>
#include <QList>
#include <QUrl>

#include <limits>

namespace corvatto {

// The URLs of the files in a `text/uri-list`, at most `atMost`: one URL per line. Comments and URLs of other
// schemes and hosts are left out. A URL may hold bytes that are not UTF-8 (FilePath.h).
QList<QUrl> fileURLsFromUriList(const QByteArray& bytes,
                                qsizetype atMost = std::numeric_limits<qsizetype>::max());

// The file URLs of an `x-special/gnome-copied-files` or `x-special/mate-copied-files`: a first line "copy" or
// "cut", then one URL per line.
QList<QUrl> fileURLsFromGnomeCopiedFiles(const QByteArray& bytes,
                                         qsizetype atMost = std::numeric_limits<qsizetype>::max());

// The reverse, as file managers expect it.
QByteArray uriListFromFileURLs(const QList<QUrl>& urls);
QByteArray copiedFilesFromFileURLs(const QList<QUrl>& urls, bool areCut);

} // namespace corvatto
