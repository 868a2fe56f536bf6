#include "base/UriList.h"

#include <QSysInfo>

#include <algorithm>
#include <optional>

namespace corvatto {
namespace {

// Bytes. No path that a file can have takes more, even with all of it escaped.
constexpr qsizetype longestLine = 16'384;

std::optional<QUrl> fileURL(QByteArrayView line) {
    line = line.trimmed();
    if (line.isEmpty() || line.startsWith('#') || line.size() > longestLine) {
        return std::nullopt;
    }
    // Percent signs that escape nothing and bytes beyond ASCII occur in the wild; the tolerant mode reads
    // both.
    QUrl url = QUrl::fromEncoded(line.toByteArray(), QUrl::TolerantMode);
    if (!url.isValid() || url.scheme() != QLatin1String("file") || url.path().isEmpty()) {
        return std::nullopt;
    }
    const QString host = url.host();
    if (!host.isEmpty()) {
        const bool local = host.compare(QLatin1String("localhost"), Qt::CaseInsensitive) == 0 ||
                           host.compare(QSysInfo::machineHostName(), Qt::CaseInsensitive) == 0;
        if (!local) {
            return std::nullopt;
        }
        url.setHost({});
    }
    QString path = url.path(QUrl::FullyDecoded);
    // What follows two slashes Qt takes for the name of a machine.
    const auto slashes = std::find_if(path.cbegin(), path.cend(), [](QChar c) { return c != u'/'; });
    path.remove(0, std::max<qsizetype>(0, slashes - path.cbegin() - 1));
    // A NUL cannot be part of a path, and a line feed would be taken for the end of one when the paths are
    // joined.
    if (!path.startsWith(QLatin1Char('/')) || path.contains(QChar(QChar::Null)) ||
        path.contains(QLatin1Char('\n'))) {
        return std::nullopt;
    }
    return QUrl::fromLocalFile(path);
}

// Takes the first line off `lines`, with its end.
QByteArrayView takeLine(QByteArrayView& lines) {
    const qsizetype end = lines.indexOf('\n');
    const QByteArrayView line = lines.first(end < 0 ? lines.size() : end);
    lines = lines.sliced(end < 0 ? lines.size() : end + 1);
    return line;
}

QList<QUrl> fileURLsFromLines(QByteArrayView lines, qsizetype atMost) {
    QList<QUrl> urls;
    while (!lines.isEmpty() && urls.size() < atMost) {
        if (const auto url = fileURL(takeLine(lines))) {
            urls.append(*url);
        }
    }
    return urls;
}

} // namespace

QList<QUrl> fileURLsFromUriList(const QByteArray& bytes, qsizetype atMost) {
    return fileURLsFromLines(bytes, atMost);
}

QList<QUrl> fileURLsFromGnomeCopiedFiles(const QByteArray& bytes, qsizetype atMost) {
    QByteArrayView lines(bytes);
    const QByteArrayView action = takeLine(lines).trimmed();
    return action == "copy" || action == "cut" ? fileURLsFromLines(lines, atMost) : QList<QUrl>();
}

QByteArray uriListFromFileURLs(const QList<QUrl>& urls) {
    QByteArray bytes;
    for (const QUrl& url : urls) {
        bytes += url.toEncoded(QUrl::FullyEncoded) + "\r\n";
    }
    return bytes;
}

QByteArray gnomeCopiedFilesFromFileURLs(const QList<QUrl>& urls) {
    QByteArray bytes = "copy";
    for (const QUrl& url : urls) {
        bytes += '\n' + url.toEncoded(QUrl::FullyEncoded);
    }
    return bytes;
}

} // namespace corvatto
