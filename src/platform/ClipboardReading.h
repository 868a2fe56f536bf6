// Collects the content of the clipboard from its owner, as ClipboardReadPlan says, over whatever connection
// there is to it. Each flavour arrives whole or counts as absent; an image or a long text is decoded
// beside the main thread before it counts.
#pragma once

#include "platform/ClipboardReadPlan.h"

#include <QObject>
#include <QTimer>

#include <functional>
#include <memory>

namespace corvatto {

// The owner of the clipboard, at one moment of ownership. Each operation ends with exactly one call of its
// callback, unless the source is destroyed before; one operation at a time. Callbacks may destroy the source.
class ClipboardSource {
public:
    ClipboardSource() = default;
    virtual ~ClipboardSource() = default;
    ClipboardSource(const ClipboardSource&) = delete;
    ClipboardSource& operator=(const ClipboardSource&) = delete;

    // The names of the targets that the owner offers, or that it is worth asking for without knowing. Empty
    // when there are none, or when the owner does not answer, for which the source prints a line.
    using Listed = std::function<void(QByteArrayList targets)>;
    virtual void list(Listed done) = 0;

    // The bytes of a target; null unless the outcome is complete. `encoding` as in
    // ClipboardReadPlan::answered().
    using Fetched = std::function<void(TransferOutcome outcome, QByteArray bytes, QByteArray encoding)>;
    virtual void fetch(const QByteArray& target, qint64 byteLimit, Fetched done) = 0;

    // The owner has exited: what has not left it yet will not come.
    virtual void ownerGone() = 0;
};

// Main thread. Ends with exactly one call of its callback, unless it is destroyed before.
class ClipboardReading : public QObject {
    Q_OBJECT

public:
    // Empty content when the owner offered nothing readable, did not answer, or marked its content secret. Of
    // a readable image the pixels come with it. The callback may destroy the reading.
    using Done = std::function<void(ClipboardContent content, std::optional<Image> image)>;

    ClipboardReading(std::unique_ptr<ClipboardSource> source, const ClipboardReadLimits& limits, Done done);
    ~ClipboardReading() override;

    // The owner has exited: what has arrived completely is the answer.
    void ownerGone();

    // Whether the owner offers that target. Known once it has told.
    bool isOffered(const QByteArray& target) const { return m_offered.contains(target); }

private:
    void start();
    void listed(const QByteArrayList& targets);
    void askNext();
    void fetched(TransferOutcome outcome, const QByteArray& bytes, const QByteArray& encoding);
    void decode(const QByteArray& bytes);
    void prepareText();
    bool retryLater();
    void finish();

    std::unique_ptr<ClipboardSource> m_source;
    ClipboardReadLimits m_limits;
    Done m_done;
    QByteArrayList m_offered;
    std::optional<ClipboardReadPlan> m_plan;
    ClipboardReadPlan::Kind m_requested{};
    std::optional<Image> m_image;
    QTimer m_deadline;
    QTimer m_retry;
    int m_attempt = 0;
    bool m_isOwnerGone = false;
};

} // namespace corvatto
