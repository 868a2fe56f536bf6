#include "platform/SnapshotPasteboard.h"

#include "base/Diagnostics.h"
#include "base/ImageDecoding.h"
#include "base/TextDecoding.h"

#include <chrono>

namespace corvatto {
namespace {

// Longer than the longest polling interval, so that whoever looks at a change finds its picture decoded.
constexpr std::chrono::seconds decodedImageLifetime{6};

// Marks what a clipboard manager offers in place of a clipboard that its owner has left.
constexpr char replacesEmptyTarget[] = "application/x-kde-onlyReplaceEmpty";

} // namespace

SnapshotPasteboard::SnapshotPasteboard(const ClipboardReadLimits& limits) : m_limits(limits) {
    m_clearWithoutWrite.setSingleShot(true);
    m_clearWithoutWrite.callOnTimeout([this] { offer(m_content); });
    m_forgetImage.setSingleShot(true);
    m_forgetImage.setInterval(decodedImageLifetime);
    m_forgetImage.callOnTimeout([this] { m_image.reset(); });
}

SnapshotPasteboard::~SnapshotPasteboard() = default;

void SnapshotPasteboard::read(std::unique_ptr<ClipboardSource> source, Meaning meaning,
                              const QString& sourceApplication) {
    m_clearWithoutWrite.stop();
    m_reading = std::make_unique<ClipboardReading>(
        std::move(source), m_limits,
        [this, meaning, sourceApplication](ClipboardContent content, std::optional<Image> image) {
            finished(std::move(content), std::move(image), meaning, sourceApplication);
        });
}

void SnapshotPasteboard::finished(ClipboardContent content, std::optional<Image> image, Meaning meaning,
                                  const QString& sourceApplication) {
    const auto ended = std::move(m_reading); // it makes this call
    // A manager that goes on offering what the user has copied before makes no new copy of it.
    const bool mayBeTheSame = meaning == Meaning::aChangeIfDifferent || ended->isOffered(replacesEmptyTarget);
    const bool isChange = meaning != Meaning::noChange && !(mayBeTheSame && content.isSameCopyAs(m_content));
    setContent(std::move(content), std::move(image));
    if (isChange) {
        m_sourceApplication = sourceApplication;
        countChange();
    }
    wasRead();
}

void SnapshotPasteboard::endReading() {
    if (m_reading) {
        m_reading->ownerGone();
    }
}

void SnapshotPasteboard::emptied() {
    m_reading.reset();
    setContent({});
    countChange();
}

void SnapshotPasteboard::countChange() {
    ++m_changeCount;
    if (onChange) {
        onChange();
    }
}

void SnapshotPasteboard::setContent(ClipboardContent content, std::optional<Image> image) {
    m_content = std::move(content);
    m_image = std::move(image);
    if (m_image) {
        m_forgetImage.start();
    }
}

void SnapshotPasteboard::clearContents() {
    overtaken();
    emptied();
    // A write usually follows at once. Other programs then see one change, and not an empty clipboard in
    // between, which some clipboard managers would fill with what they remember.
    m_clearWithoutWrite.start(0);
}

void SnapshotPasteboard::write(ClipboardContent content) {
    m_clearWithoutWrite.stop();
    m_reading.reset();
    overtaken();
    setContent(std::move(content));
    countChange();
    offer(m_content);
}

void SnapshotPasteboard::setString(const QString& text) {
    write(ClipboardContent::ofText(text));
}

void SnapshotPasteboard::writeFileURLs(const QList<QUrl>& urls) {
    write(ClipboardContent::ofFileURLs(urls));
}

void SnapshotPasteboard::writeImage(const Image& image) {
    write(ClipboardContent::ofImage(image));
}

QList<QUrl> SnapshotPasteboard::fileURLs() const {
    return m_content.fileURLs();
}

std::optional<Image> SnapshotPasteboard::image() const {
    if (m_image || m_content.imageBytes.isNull()) {
        return m_image;
    }
    auto pixels = decodeImage(m_content.imageBytes);
    return pixels ? std::optional(Image(std::move(*pixels))) : std::nullopt;
}

std::optional<QByteArray> SnapshotPasteboard::imageData(ImageType type) const {
    const char* wanted = type == ImageType::Tiff ? "image/tiff" : "image/png";
    if (m_content.imageBytes.isNull() || m_content.imageType != wanted) {
        return std::nullopt;
    }
    return m_content.imageBytes;
}

std::optional<QByteArray> SnapshotPasteboard::utf8String() const {
    auto text = m_content.text();
    if (!text) {
        return std::nullopt;
    }
    if (text->hadInvalidBytes) {
        printLine(QStringLiteral("[Pasteboard] ERROR: %1 holds invalid bytes, which are replaced.")
                      .arg(QString::fromUtf8(m_content.textTarget)));
    }
    return std::move(text->utf8);
}

std::optional<QString> SnapshotPasteboard::string() const {
    const auto utf8 = utf8String();
    return utf8 ? std::optional(decodeText("UTF8_STRING", *utf8).text) : std::nullopt;
}

} // namespace corvatto
