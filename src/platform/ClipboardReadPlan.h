// What to ask a clipboard's owner for, in which order, and what ends the questions: the same on every display
// system.
//
// First, and alone, the mark of secrecy: what is secret is never asked for. Then the files; without any, the
// best image; and the best text. A flavour that fails gives way to the next of its kind.
#pragma once

#include "platform/ClipboardContent.h"

#include <QByteArrayList>

#include <chrono>
#include <deque>
#include <optional>

namespace corvatto {

struct ClipboardReadLimits {
    std::chrono::milliseconds silence{5'000}; // between two signs of life of the owner
    std::chrono::milliseconds total{20'000};  // for all the flavours of one change
    qint64 textBytes = qint64{64} << 20;      // of lists of files as well
    qint64 imageBytes = qint64{192} << 20;    // an 8K screenshot as an uncompressed bitmap is 133 MB
};

// How a request for one flavour ended.
enum class TransferOutcome { complete, refused, tooLarge, timedOut };

// Prints a line when the transfer of `target` was too large or too late.
void reportTransfer(TransferOutcome outcome, const QByteArray& target, qint64 byteLimit);

// Main thread. Prints a line for each answer that is too large, too late or damaged.
class ClipboardReadPlan {
public:
    enum class Kind { secrecyHint, uriList, cutSelection, gnomeCopiedFiles, image, text };
    struct Request {
        Kind kind;
        QByteArray target;
        qint64 byteLimit;
    };

    // `offered` are the owner's target names. The limits outlive the plan.
    ClipboardReadPlan(const QByteArrayList& offered, const ClipboardReadLimits& limits);

    // The target that marks content as secret. It counts wherever it stands among the targets.
    static const QByteArray secrecyHintTarget;

    // What to ask for now; absent when there is nothing left to ask.
    std::optional<Request> nextRequest();

    // The answer to the last request. `encoding` is the text target whose encoding the bytes have, where the
    // owner chose another one than was asked for; empty otherwise. An image is to be decoded first:
    // imageDecoded().
    void answered(TransferOutcome outcome, const QByteArray& bytes, const QByteArray& encoding = {});

    // Whether the complete answer to an image request can be decoded.
    void imageDecoded(const QByteArray& bytes, bool isReadable);

    // Whether the owner has refused everything that it was asked for. Some do so for some moments after a
    // takeover.
    bool wasAllRefused() const { return m_requests > 0 && m_requests == m_refusals; }

    // What has been collected.
    ClipboardContent& content() { return m_content; }

private:
    bool isWanted(const Request& request) const;
    void dropKind(Kind kind);

    const ClipboardReadLimits& m_limits;
    std::deque<Request> m_queue;
    std::optional<Request> m_current;
    ClipboardContent m_content;
    bool m_offersCutSelection = false;
    int m_requests = 0;
    int m_refusals = 0;
};

} // namespace corvatto
