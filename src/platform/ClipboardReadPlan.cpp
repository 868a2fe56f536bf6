#include "platform/ClipboardReadPlan.h"

#include "base/Diagnostics.h"
#include "base/ImageDecoding.h"
#include "base/TextDecoding.h"
#include "base/UriList.h"

#include <algorithm>

namespace corvatto {
namespace {

constexpr qint64 flagBytes = 64; // of a mark, which is a word or a digit

// How many flavours of one kind are tried before it counts as absent.
constexpr std::size_t mostAttempts = 3;

// Owners that offer their text formatted as well, such as spreadsheets, offer its picture too: a drawing of
// the text.
bool isFormattedText(const QByteArrayList& offered) {
    const bool isFormatted = offered.contains("text/rtf") || offered.contains("application/rtf") ||
                             offered.contains("text/richtext");
    return isFormatted && std::any_of(offered.cbegin(), offered.cend(), [](const QByteArray& target) {
               return textFlavourRank(target).has_value();
           });
}

QByteArrayList textTargets(const QByteArrayList& offered) {
    QByteArrayList targets;
    std::copy_if(offered.cbegin(), offered.cend(), std::back_inserter(targets),
                 [](const QByteArray& target) { return textFlavourRank(target).has_value(); });
    std::stable_sort(targets.begin(), targets.end(), [](const QByteArray& a, const QByteArray& b) {
        return *textFlavourRank(a) < *textFlavourRank(b);
    });
    return targets;
}

} // namespace

void reportTransfer(TransferOutcome outcome, const QByteArray& target, qint64 byteLimit) {
    if (outcome == TransferOutcome::tooLarge) {
        printLine(QStringLiteral("[Pasteboard] ERROR: %1 is larger than %2 bytes, not read.")
                      .arg(QString::fromUtf8(target))
                      .arg(byteLimit));
    } else if (outcome == TransferOutcome::timedOut) {
        printLine(QStringLiteral("[Pasteboard] ERROR: The clipboard owner did not deliver %1 in time.")
                      .arg(QString::fromUtf8(target)));
    }
}

const QByteArray ClipboardReadPlan::secrecyHintTarget = "x-kde-passwordManagerHint";

ClipboardReadPlan::ClipboardReadPlan(const QByteArrayList& offered, const ClipboardReadLimits& limits)
    : m_limits(limits) {
    const auto add = [&](Kind kind, const QByteArrayList& targets, qint64 byteLimit) {
        std::size_t attempts = 0;
        for (const QByteArray& target : targets) {
            if (attempts < mostAttempts && offered.contains(target)) {
                m_queue.push_back({kind, target, byteLimit});
                ++attempts;
            }
        }
    };
    constexpr char cutSelectionTarget[] = "application/x-kde-cutselection";
    m_offersCutSelection = offered.contains(cutSelectionTarget);
    add(Kind::secrecyHint, {secrecyHintTarget}, flagBytes);
    add(Kind::uriList, {"text/uri-list"}, m_limits.textBytes);
    add(Kind::cutSelection, {cutSelectionTarget}, flagBytes);
    add(Kind::gnomeCopiedFiles, {"x-special/gnome-copied-files", "x-special/mate-copied-files"},
        m_limits.textBytes);
    add(Kind::image, isFormattedText(offered) ? QByteArrayList() : imageTypes(), m_limits.imageBytes);
    add(Kind::text, textTargets(offered), m_limits.textBytes);
}

bool ClipboardReadPlan::isWanted(const Request& request) const {
    const bool haveFiles = !fileURLsFromUriList(m_content.uriList, 1).isEmpty() ||
                           !fileURLsFromGnomeCopiedFiles(m_content.gnomeCopiedFiles, 1).isEmpty();
    switch (request.kind) {
    case Kind::gnomeCopiedFiles:
        // It tells a cut from a copy. A file manager that takes a reading of it for the paste of a cut, and
        // clears the clipboard, tells that by the other target as well.
        return m_content.gnomeCopiedFiles.isNull() && !(haveFiles && m_offersCutSelection);
    case Kind::image: // beside files it is their icon
        return m_content.imageBytes.isNull() && !haveFiles;
    case Kind::text:
        return m_content.textBytes.isNull();
    case Kind::secrecyHint:
    case Kind::uriList:
    case Kind::cutSelection:
        break;
    }
    return true;
}

std::optional<ClipboardReadPlan::Request> ClipboardReadPlan::nextRequest() {
    m_current.reset();
    while (!m_queue.empty() && !m_current) {
        if (isWanted(m_queue.front())) {
            m_current = m_queue.front();
            ++m_requests;
        }
        m_queue.pop_front();
    }
    return m_current;
}

void ClipboardReadPlan::dropKind(Kind kind) {
    std::erase_if(m_queue, [kind](const Request& request) { return request.kind == kind; });
}

void ClipboardReadPlan::answered(TransferOutcome outcome, const QByteArray& bytes,
                                 const QByteArray& encoding) {
    const bool isComplete = outcome == TransferOutcome::complete;
    reportTransfer(outcome, m_current->target, m_current->byteLimit);
    m_refusals += outcome == TransferOutcome::refused ? 1 : 0;
    switch (m_current->kind) {
    case Kind::secrecyHint:
        // A mark that cannot be read is taken for a secret: better a copy not recorded than a password that
        // is.
        if (!isComplete || bytes.startsWith("secret")) {
            m_queue.clear();
        }
        break;
    case Kind::uriList:
        m_content.uriList = bytes;
        break;
    case Kind::cutSelection:
        m_content.filesAreCut = bytes.startsWith('1');
        break;
    case Kind::gnomeCopiedFiles:
        m_content.gnomeCopiedFiles = bytes;
        m_content.filesAreCut |= bytes.startsWith("cut");
        break;
    case Kind::image:
        break;
    case Kind::text:
        if (isComplete) {
            m_content.textTarget = encoding.isEmpty() ? m_current->target : encoding;
            m_content.textBytes = bytes;
        } else if (outcome != TransferOutcome::refused) {
            dropKind(Kind::text); // the same text in another encoding would be as large, and as late
        }
        break;
    }
}

void ClipboardReadPlan::imageDecoded(const QByteArray& bytes, bool isReadable) {
    if (isReadable) {
        m_content.imageType = m_current->target;
        m_content.imageBytes = bytes;
    } else {
        printLine(QStringLiteral("[Pasteboard] ERROR: %1 of %2 bytes is not a readable image.")
                      .arg(QString::fromUtf8(m_current->target))
                      .arg(bytes.size()));
    }
}

} // namespace corvatto
