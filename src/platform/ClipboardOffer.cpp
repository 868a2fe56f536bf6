#include "platform/ClipboardOffer.h"

#include "base/ImageDecoding.h"
#include "base/TextDecoding.h"
#include "base/UriList.h"

#include <QBuffer>
#include <QImageWriter>
#include <QPainter>

namespace corvatto {
namespace {

// Formats without transparency show what is transparent as white, like the paper that it would be pasted on.
QImage opaque(const QImage& image) {
    QImage paper(image.size(), QImage::Format_RGB32);
    paper.fill(Qt::white);
    paper.setDotsPerMeterX(image.dotsPerMeterX());
    paper.setDotsPerMeterY(image.dotsPerMeterY());
    QPainter painter(&paper);
    painter.drawImage(0, 0, image);
    return paper;
}

QByteArray reencoded(const QByteArray& imageBytes, const QByteArray& format) {
    auto image = decodeImage(imageBytes);
    if (image && image->hasAlphaChannel() && (format == "jpeg" || format == "bmp")) {
        image = opaque(*image);
    }
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    if (!image || !QImageWriter(&buffer, format).write(*image)) {
        return {};
    }
    return bytes;
}

class Offer {
public:
    std::vector<OfferedFlavour> flavours;

    void add(const QByteArray& target, const QByteArray& bytes) {
        flavours.push_back({target, target, [bytes] {
                                return bytes;
                            }});
    }

    void addFiles(const ClipboardContent& content) {
        if (!content.uriList.isNull()) {
            add("text/uri-list", content.uriList);
        }
        const QList<QUrl> urls = content.fileURLs();
        if (urls.isEmpty()) {
            return;
        }
        const QByteArray list = content.gnomeCopiedFiles.isNull()
                                    ? copiedFilesFromFileURLs(urls, content.filesAreCut)
                                    : content.gnomeCopiedFiles;
        add("x-special/gnome-copied-files", list);
        add("x-special/mate-copied-files", list);
        if (content.filesAreCut) {
            add("application/x-kde-cutselection", "1");
        }
    }

    void addImage(const ClipboardContent& content) {
        add(content.imageType, content.imageBytes);
        for (const char* format : {"png", "bmp", "jpeg", "tiff"}) {
            const QByteArray type = QByteArray("image/") + format;
            if (type != content.imageType) {
                flavours.push_back({type, type,
                                    [bytes = content.imageBytes, format] { return reencoded(bytes, format); },
                                    true});
            }
        }
    }

    void addText(const ClipboardContent& content) {
        const bool isUtf8 = content.isTextPrepared || content.textTarget == "UTF8_STRING";
        const auto utf8 = [isUtf8, target = content.textTarget, bytes = content.textBytes] {
            return isUtf8 ? bytes : decodeText(target, bytes).text.toUtf8();
        };
        for (const char* target : {"UTF8_STRING", "text/plain;charset=utf-8", "text/plain"}) {
            flavours.push_back({target, target, utf8});
        }
        // TEXT leaves the choice of the encoding to the owner, and the type says which it is.
        flavours.push_back({"TEXT", "UTF8_STRING", utf8});
        flavours.push_back({"STRING", "STRING", [utf8] {
                                return QString::fromUtf8(utf8()).toLatin1();
                            }});
    }
};

} // namespace

std::vector<OfferedFlavour> offeredFlavours(const ClipboardContent& content) {
    Offer offer;
    offer.addFiles(content);
    if (!content.imageBytes.isNull()) {
        offer.addImage(content);
    }
    if (!content.textBytes.isNull()) {
        offer.addText(content);
    }
    return std::move(offer.flavours);
}

} // namespace corvatto
