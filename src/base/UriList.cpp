#include "base/UriList.h"

#include "base/FilePath.h"

#include <QSysInfo>

#include <algorithm>
#include <optional>

namespace corvatto {
namespace {

// Bytes. No path that a file can have takes more, even with all of it escaped.
constexpr qsizetype longestLine = 16'384;

int hexDigit(char c) {
    return c >= '0' && c <= '9'   ? c - '0'
           : c >= 'a' && c <= 'f' ? c - 'a' + 10
           : c >= 'A' && c <= 'F' ? c - 'A' + 10
                                  : -1;
}

// A percent sign that escapes nothing stands for itself, as in addresses written by hand.
QByteArray unescape(QByteArrayView text) {
    QByteArray bytes;
    bytes.reserve(text.size());
    for (qsizetype i = 0; i < text.size(); ++i) {
        const int high = text[i] == '%' && i + 2 < text.size() ? hexDigit(text[i + 1]) : -1;
        const int low = high >= 0 ? hexDigit(text[i + 2]) : -1;
        if (low >= 0) {
            bytes += static_cast<char>(high * 16 + low);
            i += 2;
        } else {
            bytes += text[i];
        }
    }
    return bytes;
}

bool isThisMachine(QByteArrayView host) {
    const QByteArray name = host.toByteArray().toLower();
    return name.isEmpty() || name == "localhost" || name == QSysInfo::machineHostName().toUtf8().toLower();
}

// Not by QUrl, to which a raw "#" or "?" ends the path and bytes that are not UTF-8 are no characters:
// programs write addresses of files with all of these.
std::optional<QUrl> fileURL(QByteArrayView line) {
    constexpr QByteArrayView scheme("file:");
    while (!line.isEmpty() && (line.back() == '\0' || line.back() == '\r')) {
        line = line.chopped(1);
    }
    line = line.trimmed();
    if (line.size() > longestLine ||
        line.first(std::min(scheme.size(), line.size())).compare(scheme, Qt::CaseInsensitive) != 0) {
        return std::nullopt;
    }
    line = line.sliced(scheme.size());
    if (line.startsWith("//")) {
        const qsizetype pathStart = line.indexOf('/', 2);
        if (pathStart < 0 || !isThisMachine(line.sliced(2, pathStart - 2))) {
            return std::nullopt;
        }
        line = line.sliced(pathStart);
    }
    QByteArray path = unescape(line);
    while (path.startsWith("//")) {
        path.remove(0, 1);
    }
    if (!path.startsWith('/') || path.contains('\0')) {
        return std::nullopt;
    }
    return fileUrl(path);
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

QByteArray copiedFilesFromFileURLs(const QList<QUrl>& urls, bool areCut) {
    QByteArray bytes = areCut ? "cut" : "copy";
    for (const QUrl& url : urls) {
        bytes += '\n' + url.toEncoded(QUrl::FullyEncoded);
    }
    return bytes;
}

} // namespace corvatto
