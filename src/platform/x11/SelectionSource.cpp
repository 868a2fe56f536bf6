#include "platform/x11/SelectionSource.h"

#include <algorithm>

namespace corvatto {
namespace {

// An owner may list thousands of targets; more than this many are not looked at.
constexpr std::size_t mostTargets = 1024;
constexpr qint64 targetListBytes = qint64{mostTargets} * 64;

} // namespace

QByteArray TransferProperties::name(int n) {
    constexpr int properties = 64;
    return "CORVATTO_TRANSFER_" + QByteArray::number(n % properties);
}

xcb_atom_t TransferProperties::next() {
    return m_connection.atom(name(m_used++));
}

// The targets whose names have come so far.
struct SelectionSource::Listing {
    QByteArrayList names;
    std::size_t missing = 0;
    Listed done;
};

SelectionSource::SelectionSource(XcbConnection& connection, TransferProperties& properties,
                                 const Ownership& ownership, std::chrono::milliseconds silenceLimit)
    : m_connection(connection), m_properties(properties), m_ownership(ownership),
      m_silenceLimit(silenceLimit) {}

void SelectionSource::ownerGone() {
    if (m_transfer) {
        m_transfer->ownerGone();
    }
}

void SelectionSource::transfer(xcb_atom_t target, qint64 byteLimit, SelectionTransfer::Done done) {
    const SelectionTransfer::Request request{m_ownership.requestor, m_ownership.selection, target,
                                             m_properties.next(),   m_ownership.since,     byteLimit,
                                             m_silenceLimit};
    m_transfer = std::make_unique<SelectionTransfer>(m_connection, request, std::move(done));
}

void SelectionSource::list(Listed done) {
    m_listing.reset();
    const auto listed = [this, done = std::move(done)](const SelectionTransfer::Result& result) {
        reportTransfer(result.outcome, "TARGETS", targetListBytes);
        if (result.outcome == TransferOutcome::complete) {
            nameTargets(result.bytes, done);
        } else if (result.outcome == TransferOutcome::refused) {
            // Owners older than the convention know no TARGETS, but do know these.
            done({"UTF8_STRING", "STRING"});
        } else {
            done({});
        }
    };
    transfer(m_connection.atom("TARGETS"), targetListBytes, listed);
}

void SelectionSource::nameTargets(const QByteArray& bytes, const Listed& done) {
    std::vector<xcb_atom_t> atoms(static_cast<std::size_t>(bytes.size()) / sizeof(xcb_atom_t));
    // Not memcpy(): an owner may list nothing, and an empty vector has no address.
    std::copy_n(bytes.constData(), atoms.size() * sizeof(xcb_atom_t), reinterpret_cast<char*>(atoms.data()));
    std::erase(atoms, xcb_atom_t{XCB_ATOM_NONE});
    // The mark of secrecy counts wherever it stands in the list.
    const auto hint =
        std::find(atoms.begin(), atoms.end(), m_connection.atom(ClipboardReadPlan::secrecyHintTarget));
    if (hint != atoms.end()) {
        std::iter_swap(atoms.begin(), hint);
    }
    atoms.resize(std::min(atoms.size(), mostTargets));
    if (atoms.empty()) {
        done({});
        return;
    }
    m_listing = std::make_shared<Listing>(Listing{{}, atoms.size(), done});
    // All questions go out at once, so that the list costs one round trip to the server.
    for (const xcb_atom_t atom : atoms) {
        const auto cookie = xcb_get_atom_name(m_connection.raw(), atom);
        m_connection.whenReplied(cookie.sequence, [weakly = std::weak_ptr(m_listing)](const void* reply) {
            const auto listing = weakly.lock();
            if (!listing) {
                return; // the source has gone, or lists anew
            }
            if (reply != nullptr) {
                const auto* named = static_cast<const xcb_get_atom_name_reply_t*>(reply);
                listing->names.append(
                    QByteArray(xcb_get_atom_name_name(named), xcb_get_atom_name_name_length(named)));
            }
            if (--listing->missing == 0) {
                listing->done(listing->names);
            }
        });
    }
    m_connection.flush();
}

void SelectionSource::fetch(const QByteArray& target, qint64 byteLimit, Fetched done) {
    const auto fetched = [this, target, done = std::move(done)](SelectionTransfer::Result result) {
        const QByteArray encoding = encodingOf(target, result.type);
        done(result.outcome, std::move(result.bytes), encoding);
    };
    transfer(m_connection.atom(target), byteLimit, fetched);
}

// Asked for these two, owners choose the encoding and tell it by the type of the answer. Some call UTF-8 a
// STRING, which decoding as TEXT allows for.
QByteArray SelectionSource::encodingOf(const QByteArray& target, xcb_atom_t type) {
    if (target != "TEXT" && target != "COMPOUND_TEXT") {
        return {};
    }
    for (const char* encoding : {"UTF8_STRING", "COMPOUND_TEXT"}) {
        if (type == m_connection.atom(encoding)) {
            return encoding;
        }
    }
    return "TEXT";
}

} // namespace corvatto
