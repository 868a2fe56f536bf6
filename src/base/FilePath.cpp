#include "base/FilePath.h"

#include <QStringDecoder>

#include <unistd.h>

namespace corvatto {
namespace {

constexpr char addressPrefix[] = "file://";

// What stands for itself in an address. The "#" and "?" of a path would begin its other parts.
constexpr char unescaped[] = "/!$&'()*+,;=:@";

} // namespace

QUrl fileUrl(const QByteArray& path) {
    return QUrl::fromEncoded(addressPrefix + path.toPercentEncoding(unescaped), QUrl::StrictMode);
}

QByteArray pathOf(const QUrl& fileUrl) {
    return QByteArray::fromPercentEncoding(fileUrl.path(QUrl::FullyEncoded).toLatin1());
}

QString pathLine(const QByteArray& path) {
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    QString text = decoder.decode(path);
    const bool isPlain = !decoder.hasError() && !path.contains('\n');
    return isPlain ? text : QString::fromLatin1(fileUrl(path).toEncoded(QUrl::FullyEncoded));
}

QByteArray nativePath(const QString& pathLine) {
    return pathLine.startsWith(QLatin1String(addressPrefix)) ? pathOf(QUrl::fromEncoded(pathLine.toLatin1()))
                                                             : pathLine.toUtf8();
}

QString displayName(const QString& pathLine) {
    QString path = QString::fromUtf8(nativePath(pathLine));
    while (path.size() > 1 && path.endsWith(QLatin1Char('/'))) {
        path.chop(1);
    }
    const QString name =
        path == QLatin1String("/") ? path : path.sliced(path.lastIndexOf(QLatin1Char('/')) + 1);
    return QString(name).replace(QLatin1Char('\n'), QLatin1Char(' '));
}

bool pathExists(const QString& pathLine) {
    return !pathLine.isEmpty() && access(nativePath(pathLine).constData(), F_OK) == 0;
}

} // namespace corvatto
