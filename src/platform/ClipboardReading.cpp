#include "platform/ClipboardReading.h"

#include "base/Diagnostics.h"
#include "base/ImageDecoding.h"
#include "base/Worker.h"

#include <array>

namespace corvatto {
namespace {

using std::chrono::milliseconds;

// Some programs take the clipboard over first and are ready to answer a little later.
constexpr std::array retryDelays{milliseconds(5), milliseconds(20), milliseconds(80), milliseconds(200),
                                 milliseconds(400)};

constexpr qsizetype longestDecodedAtOnce = 256 << 10; // bytes of a text, which take about a millisecond

} // namespace

ClipboardReading::ClipboardReading(std::unique_ptr<ClipboardSource> source, const ClipboardReadLimits& limits,
                                   Done done)
    : m_source(std::move(source)), m_limits(limits), m_done(std::move(done)) {
    m_deadline.setSingleShot(true);
    m_deadline.callOnTimeout([this] {
        printLine(u"[Pasteboard] ERROR: The clipboard owner took too long.");
        finish();
    });
    m_deadline.start(m_limits.total);
    m_retry.setSingleShot(true);
    m_retry.callOnTimeout([this] { start(); });
    start();
}

ClipboardReading::~ClipboardReading() = default;

void ClipboardReading::start() {
    m_plan.reset();
    m_source->list([this](const QByteArrayList& targets) { listed(targets); });
}

void ClipboardReading::ownerGone() {
    m_isOwnerGone = true;
    if (m_retry.isActive()) {
        finish();
    } else {
        m_source->ownerGone();
    }
}

void ClipboardReading::listed(const QByteArrayList& targets) {
    m_offered = targets;
    m_plan.emplace(targets, m_limits);
    askNext();
}

void ClipboardReading::askNext() {
    const auto request = m_isOwnerGone ? std::nullopt : m_plan->nextRequest();
    if (!request) {
        if (!(m_plan->wasAllRefused() && retryLater())) {
            finish();
        }
        return;
    }
    m_requested = request->kind;
    m_source->fetch(request->target, request->byteLimit,
                    [this](TransferOutcome outcome, const QByteArray& bytes, const QByteArray& encoding) {
                        fetched(outcome, bytes, encoding);
                    });
}

void ClipboardReading::fetched(TransferOutcome outcome, const QByteArray& bytes, const QByteArray& encoding) {
    m_plan->answered(outcome, bytes, encoding);
    if (m_requested == ClipboardReadPlan::Kind::image && outcome == TransferOutcome::complete) {
        decode(bytes);
    } else if (m_requested == ClipboardReadPlan::Kind::text && bytes.size() > longestDecodedAtOnce) {
        prepareText();
    } else {
        askNext();
    }
}

void ClipboardReading::prepareText() {
    ClipboardContent text;
    text.textTarget = m_plan->content().textTarget;
    text.textBytes = m_plan->content().textBytes;
    const auto prepare = [text]() mutable {
        text.prepareText();
        return text;
    };
    runOnWorker(*this, prepare, [this](const ClipboardContent& prepared) {
        if (!m_done) {
            return; // out of time
        }
        ClipboardContent& content = m_plan->content();
        content.textBytes = prepared.textBytes;
        content.isTextPrepared = prepared.isTextPrepared;
        content.hadInvalidTextBytes = prepared.hadInvalidTextBytes;
        askNext();
    });
}

// Beside the main thread: a large picture takes a fifth of a second, and its encoding, which identifies it in
// the history, more.
void ClipboardReading::decode(const QByteArray& bytes) {
    const auto prepare = [bytes]() -> std::optional<Image> {
        auto pixels = decodeImage(bytes);
        if (!pixels) {
            return std::nullopt;
        }
        Image image(std::move(*pixels));
        image.pngData();
        return image;
    };
    runOnWorker(*this, prepare, [this, bytes](const std::optional<Image>& image) {
        if (!m_done) {
            return; // out of time
        }
        m_image = image;
        m_plan->imageDecoded(bytes, m_image.has_value());
        askNext();
    });
}

bool ClipboardReading::retryLater() {
    if (m_isOwnerGone || static_cast<std::size_t>(m_attempt) >= retryDelays.size()) {
        return false;
    }
    m_retry.start(retryDelays[static_cast<std::size_t>(m_attempt++)]);
    return true;
}

void ClipboardReading::finish() {
    m_deadline.stop();
    m_retry.stop();
    if (const Done done = std::exchange(m_done, nullptr)) {
        m_source.reset();
        done(m_plan ? std::move(m_plan->content()) : ClipboardContent(), std::move(m_image));
    }
}

} // namespace corvatto
