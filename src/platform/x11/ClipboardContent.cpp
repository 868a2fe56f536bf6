#include "platform/x11/ClipboardContent.h"

#include "base/UriList.h"

#include <QStringList>

namespace corvatto {
namespace {

// A null array means an absent flavour, so an empty one that is present must not be null.
QByteArray present(const QByteArray& bytes) {
    return bytes.isNull() ? QByteArray("") : bytes;
}

} // namespace

ClipboardContent ClipboardContent::ofText(const QString& text) {
    ClipboardContent content;
    content.textTarget = "UTF8_STRING";
    content.textBytes = present(text.toUtf8());
    return content;
}

ClipboardContent ClipboardContent::ofFileURLs(const QList<QUrl>& urls) {
    // Beside the list, the paths as text: pasted into an editor or a terminal, a copied file is its path.
    QStringList paths;
    for (const QUrl& url : urls) {
        paths.append(url.toLocalFile());
    }
    ClipboardContent content = ofText(paths.join(QLatin1Char('\n')));
    content.uriList = present(uriListFromFileURLs(urls));
    content.gnomeCopiedFiles = gnomeCopiedFilesFromFileURLs(urls);
    return content;
}

ClipboardContent ClipboardContent::ofImage(const Image& image) {
    ClipboardContent content;
    content.imageType = "image/png";
    content.imageBytes = present(image.pngData());
    return content;
}

bool ClipboardContent::isEmpty() const {
    return uriList.isNull() && gnomeCopiedFiles.isNull() && imageBytes.isNull() && textBytes.isNull();
}

} // namespace corvatto
