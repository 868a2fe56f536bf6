#include "platform/ClipboardContent.h"

#include "base/FilePath.h"
#include "base/TextDecoding.h"
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
    content.isTextPrepared = true;
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

QList<QUrl> ClipboardContent::fileURLs() const {
    const QList<QUrl> urls = fileURLsFromUriList(uriList);
    return urls.isEmpty() ? fileURLsFromGnomeCopiedFiles(gnomeCopiedFiles) : urls;
}

std::optional<ClipboardContent::Text> ClipboardContent::text() const {
    if (textBytes.isNull()) {
        return std::nullopt;
    }
    if (isTextPrepared) {
        return Text{textBytes, hadInvalidTextBytes};
    }
    const DecodedText decoded = decodeText(textTarget, textBytes);
    return Text{present(decoded.text.toUtf8()), decoded.hadInvalidBytes};
}

void ClipboardContent::prepareText() {
    if (const auto decoded = text()) {
        textBytes = decoded->utf8;
        isTextPrepared = true;
        hadInvalidTextBytes = decoded->hadInvalidBytes;
    }
}

bool ClipboardContent::isSameCopyAs(const ClipboardContent& other) const {
    const QList<QUrl> urls = fileURLs();
    if (const QList<QUrl> otherUrls = other.fileURLs(); !urls.isEmpty() || !otherUrls.isEmpty()) {
        return urls == otherUrls;
    }
    const auto mine = text(), others = other.text();
    if (mine || others) {
        return mine && others && mine->utf8 == others->utf8;
    }
    return !imageBytes.isNull() && imageBytes == other.imageBytes;
}

} // namespace corvatto
