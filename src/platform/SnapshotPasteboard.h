// What is the same for the clipboard of each display system: the snapshot that answers all reads, the count
// of changes, the reading of what another program has copied, and our own writes.
//
// A change counts once it has been read, even if that is that there is nothing to read; an own write counts
// at once and ends the reading of what it replaces.
#pragma once

#include "platform/ClipboardReading.h"
#include "platform/Pasteboard.h"

namespace corvatto {

// Main thread.
class SnapshotPasteboard : public Pasteboard {
public:
    qint64 changeCount() const override { return m_changeCount; }
    QString sourceApplicationName() const override { return m_sourceApplication; }
    QList<QUrl> fileURLs() const override;
    std::optional<Image> image() const override;
    std::optional<QByteArray> imageData(ImageType type) const override;
    std::optional<QByteArray> utf8String() const override;
    std::optional<QString> string() const override;

    void clearContents() override;
    void setString(const QString& text) override;
    void writeFileURLs(const QList<QUrl>& urls) override;
    void writeImage(const Image& image) override;

protected:
    enum class Meaning { aChange, aChangeIfDifferent, noChange };

    explicit SnapshotPasteboard(const ClipboardReadLimits& limits);
    ~SnapshotPasteboard() override;

    const ClipboardReadLimits& limits() const { return m_limits; }
    const ClipboardContent& content() const { return m_content; }

    // Reads from the new owner what was copied in the application of that name. A reading under way is
    // dropped: a change that is overtaken before it was read is not there any more to be recorded. The change
    // before stays what it is until the new one is complete.
    void read(std::unique_ptr<ClipboardSource> source, Meaning meaning, const QString& sourceApplication);
    bool isReading() const { return m_reading != nullptr; }
    // The owner that is being read has exited: what has arrived completely is the answer.
    void endReading();

    // Without an answer.
    void dropReading() { m_reading.reset(); }

    // Somebody has emptied the clipboard: a change.
    void emptied();

    // Takes the clipboard over with the content of an own write.
    virtual void offer(const ClipboardContent& content) = 0;
    // An own write is replacing what is on the clipboard, in this moment or right after it.
    virtual void overtaken() = 0;
    // The snapshot is what the owner had.
    virtual void wasRead() = 0;

private:
    void countChange();
    void setContent(ClipboardContent content, std::optional<Image> image = std::nullopt);
    void finished(ClipboardContent content, std::optional<Image> image, Meaning meaning,
                  const QString& sourceApplication);
    void write(ClipboardContent content);

    ClipboardReadLimits m_limits;
    qint64 m_changeCount = 0;
    ClipboardContent m_content; // of the last change
    QString m_sourceApplication;
    std::optional<Image> m_image; // decoded from m_content, for as long as a look at the change may take
    QTimer m_forgetImage;
    std::unique_ptr<ClipboardReading> m_reading; // while content is being collected
    QTimer m_clearWithoutWrite;                  // carries out a clear that no write follows
};

} // namespace corvatto
