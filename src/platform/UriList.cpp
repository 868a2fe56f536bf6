#include "platform/UriList.h"

#include <QSysInfo>

#include <optional>

namespace corvatto {
namespace {

std::optional<QUrl> fileURL(QByteArray line) {
    line = line.trimmed();
    if (line.isEmpty() || line.startsWith('#')) {
        return std::nullopt;
    }
    // Percent signs that escape nothing and bytes beyond ASCII occur in the wild; the tolerant mode reads
    // both.
    QUrl url = QUrl::fromEncoded(line, QUrl::TolerantMode);
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
    const QString path = url.path(QUrl::FullyDecoded);
    // A NUL cannot be part of a path, and a line feed would be taken for the end of one when the paths are
    // joined.
    if (!path.startsWith(QLatin1Char('/')) || path.contains(QChar(QChar::Null)) ||
        path.contains(QLatin1Char('\n'))) {
        return std::nullopt;
    }
    return QUrl::fromLocalFile(path);
}

QList<QUrl> fileURLsFromLines(const QList<QByteArray>& lines) {
    QList<QUrl> urls;
    for (const QByteArray& line : lines) {
        if (const auto url = fileURL(line)) {
            urls.append(*url);
        }
    }
    return urls;
}

} // namespace

QList<QUrl> fileURLsFromUriList(const QByteArray& bytes) {
    return fileURLsFromLines(bytes.split('\n'));
}

QList<QUrl> fileURLsFromGnomeCopiedFiles(const QByteArray& bytes) {
    QList<QByteArray> lines = bytes.split('\n');
    const QByteArray action = lines.first().trimmed();
    if (action != "copy" && action != "cut") {
        return {};
    }
    lines.removeFirst();
    return fileURLsFromLines(lines);
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
