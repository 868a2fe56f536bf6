// A clipboard in memory. A test plays the other programs through copy…(), the code under test writes as
// usual.
#pragma once

#include "platform/Pasteboard.h"

namespace corvatto::test {

class FakePasteboard : public Pasteboard {
public:
    struct Content {
        QList<QUrl> urls;
        std::optional<Image> image;
        std::optional<QByteArray> tiff;
        std::optional<QByteArray> png;
        std::optional<QString> text;
    };

    Content content;
    QString sourceApplication;
    qint64 count = 1;
    mutable int reads = 0; // how often content, as opposed to the counter, was asked for

    void copy(Content copied) {
        content = std::move(copied);
        ++count;
        if (onChange) {
            onChange();
        }
    }
    void copyText(const QString& text) { copy({{}, {}, {}, {}, text}); }

    qint64 changeCount() const override { return count; }
    QString sourceApplicationName() const override { return sourceApplication; }
    QList<QUrl> fileURLs() const override { return read(content.urls); }
    std::optional<Image> image() const override { return read(content.image); }
    std::optional<QByteArray> imageData(ImageType type) const override {
        return read(type == ImageType::Tiff ? content.tiff : content.png);
    }
    std::optional<QByteArray> utf8String() const override {
        return content.text ? std::optional(read(*content.text).toUtf8()) : std::nullopt;
    }
    std::optional<QString> string() const override { return read(content.text); }

    void clearContents() override { copy({}); }
    void setString(const QString& text) override { copyText(text); }
    void writeFileURLs(const QList<QUrl>& urls) override { copy({urls, {}, {}, {}, {}}); }
    void handOver(std::function<void()> done) override { done(); }
    void writeImage(const Image& image) override { copy({{}, image, {}, {}, {}}); }

private:
    template <typename T>
    T read(const T& value) const {
        ++reads;
        return value;
    }
};

} // namespace corvatto::test
