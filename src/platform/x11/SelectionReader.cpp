#include "platform/x11/SelectionReader.h"

#include "base/Diagnostics.h"
#include "base/ImageDecoding.h"
#include "base/TextDecoding.h"
#include "base/UriList.h"

#include <algorithm>

namespace corvatto {
namespace {

using Outcome = SelectionTransfer::Outcome;

// An owner may list thousands of targets; more than this many are not looked at.
constexpr std::size_t maximumTargets = 1024;
// How many formats of one flavour are tried before it counts as absent.
constexpr std::size_t maximumAttempts = 3;
constexpr qint64 fileListBytes = qint64{4} << 20; // some 50,000 files
constexpr qint64 hintBytes = 64;

const char secretHint[] = "x-kde-passwordManagerHint";
const char uriListTarget[] = "text/uri-list";
const char gnomeFilesTarget[] = "x-special/gnome-copied-files";

// Properties that receive the answers, used in turn: a late answer to a transfer that was given up lands in a
// property that nobody looks at.
xcb_atom_t nextProperty(XcbConnection& connection) {
    constexpr int properties = 64;
    static int next = 0;
    next = (next + 1) % properties;
    return connection.atom("CORVATTO_TRANSFER_" + QByteArray::number(next));
}

void report(Outcome outcome, const QByteArray& target, qint64 byteLimit) {
    if (outcome == Outcome::tooLarge) {
        printLine(QStringLiteral("[Pasteboard] ERROR: %1 is larger than %2 bytes, not read.")
                      .arg(QString::fromUtf8(target))
                      .arg(byteLimit));
    } else if (outcome == Outcome::silent) {
        printLine(QStringLiteral("[Pasteboard] ERROR: The clipboard owner did not deliver %1 in time.")
                      .arg(QString::fromUtf8(target)));
    }
}

} // namespace

SelectionReader::SelectionReader(XcbConnection& connection, xcb_window_t requestor, xcb_atom_t selection,
                                 xcb_timestamp_t time, const SelectionLimits& limits, Done done)
    : m_connection(connection), m_requestor(requestor), m_selection(selection), m_time(time),
      m_limits(limits), m_done(std::move(done)), m_self(std::make_shared<SelectionReader*>(this)) {
    m_deadline.setSingleShot(true);
    m_deadline.callOnTimeout([this] {
        printLine(u"[Pasteboard] ERROR: The clipboard owner took too long.");
        m_outOfTime = true;
        m_transfer.reset();
        finish();
    });
    m_deadline.start(m_limits.altogether);
    readTargets();
}

SelectionReader::~SelectionReader() = default;

void SelectionReader::ownerGone() {
    // Further conversions would be refused by the server; what the transfer under way cannot finish is
    // absent.
    m_outOfTime = true;
    if (m_transfer) {
        m_transfer->ownerGone();
    } else {
        finish();
    }
}

void SelectionReader::transfer(const Target& target, qint64 byteLimit, Arrived arrived) {
    if (m_outOfTime) {
        finish();
        return;
    }
    const SelectionTransfer::Request request{
        m_requestor, m_selection, target.atom,     nextProperty(m_connection),
        m_time,      byteLimit,   m_limits.silence};
    m_transfer = std::make_unique<SelectionTransfer>(
        m_connection, request,
        [name = target.name, byteLimit, arrived = std::move(arrived)](Outcome outcome, QByteArray bytes) {
            report(outcome, name, byteLimit);
            // The transfer is replaced or destroyed further down, while this callback, which it has let go
            // of, runs.
            arrived(outcome, std::move(bytes));
        });
}

const SelectionReader::Target* SelectionReader::offered(const QByteArray& name) const {
    const auto found = std::find_if(m_targets.begin(), m_targets.end(),
                                    [&](const Target& target) { return target.name == name; });
    return found == m_targets.end() ? nullptr : &*found;
}

void SelectionReader::readTargets() {
    const Target targets{m_connection.atom("TARGETS"), "TARGETS"};
    transfer(targets, qint64{maximumTargets} * 64, [this](Outcome outcome, const QByteArray& bytes) {
        if (outcome == Outcome::complete) {
            handleTargets(bytes);
        } else if (outcome == Outcome::refused && !m_outOfTime) {
            // Owners older than the convention know no TARGETS, but do know these.
            m_targets = {{m_connection.atom("UTF8_STRING"), "UTF8_STRING"}, {XCB_ATOM_STRING, "STRING"}};
            planText();
        } else {
            finish();
        }
    });
}

void SelectionReader::handleTargets(const QByteArray& bytes) {
    std::vector<xcb_atom_t> atoms(static_cast<std::size_t>(bytes.size()) / sizeof(xcb_atom_t));
    std::copy_n(bytes.constData(), atoms.size() * sizeof(xcb_atom_t), reinterpret_cast<char*>(atoms.data()));
    // The mark of secrecy counts wherever it stands in the list.
    const auto hint = std::find(atoms.begin(), atoms.end(), m_connection.atom(secretHint));
    if (hint != atoms.end()) {
        std::iter_swap(atoms.begin(), hint);
    }
    atoms.resize(std::min(atoms.size(), maximumTargets));
    nameTargets(std::move(atoms));
}

void SelectionReader::nameTargets(std::vector<xcb_atom_t> atoms) {
    m_transfer.reset();
    std::erase(atoms, xcb_atom_t{XCB_ATOM_NONE});
    m_targets.reserve(atoms.size());
    m_namesMissing = atoms.size();
    if (atoms.empty()) {
        finish();
        return;
    }
    // All questions go out at once, so that the list costs one round trip to the server.
    for (const xcb_atom_t atom : atoms) {
        const auto cookie = xcb_get_atom_name(m_connection.raw(), atom);
        m_connection.whenReplied(cookie.sequence, [atom, self = std::weak_ptr(m_self)](const void* reply) {
            const auto alive = self.lock();
            if (!alive) {
                return;
            }
            SelectionReader& reader = **alive;
            if (reply != nullptr) {
                const auto* named = static_cast<const xcb_get_atom_name_reply_t*>(reply);
                reader.m_targets.push_back(
                    {atom, QByteArray(xcb_get_atom_name_name(named), xcb_get_atom_name_name_length(named))});
            }
            if (--reader.m_namesMissing == 0 && !reader.m_outOfTime) {
                reader.handleNamedTargets();
            }
        });
    }
    m_connection.flush();
}

void SelectionReader::handleNamedTargets() {
    if (offered(secretHint) != nullptr) {
        readHint();
    } else {
        readFiles();
    }
}

void SelectionReader::readHint() {
    transfer(*offered(secretHint), hintBytes, [this](Outcome outcome, const QByteArray& hint) {
        // A mark that cannot be read is taken for a secret: better a copy not recorded than a password that
        // is.
        if (outcome != Outcome::complete || hint.startsWith("secret")) {
            finish();
        } else {
            readFiles();
        }
    });
}

void SelectionReader::readFiles() {
    const Target* list = offered(uriListTarget);
    if (list == nullptr) {
        readGnomeFiles();
        return;
    }
    transfer(*list, fileListBytes, [this](Outcome, const QByteArray& bytes) {
        m_content.uriList = bytes;
        readGnomeFiles();
    });
}

void SelectionReader::readGnomeFiles() {
    const Target* list = offered(gnomeFilesTarget);
    if (list == nullptr) {
        planImage();
        return;
    }
    transfer(*list, fileListBytes, [this](Outcome, const QByteArray& bytes) {
        m_content.gnomeCopiedFiles = bytes;
        planImage();
    });
}

void SelectionReader::planImage() {
    const bool haveFiles = !fileURLsFromUriList(m_content.uriList, 1).isEmpty() ||
                           !fileURLsFromGnomeCopiedFiles(m_content.gnomeCopiedFiles, 1).isEmpty();
    m_candidates.clear();
    if (!haveFiles) { // an image beside files is their icon
        for (const QByteArray& type : decodableImageTypes()) {
            if (const Target* target = offered(type);
                target != nullptr && m_candidates.size() < maximumAttempts) {
                m_candidates.push_back(target);
            }
        }
    }
    readImage(0);
}

void SelectionReader::readImage(std::size_t candidate) {
    if (candidate >= m_candidates.size()) {
        planText();
        return;
    }
    const Target& target = *m_candidates[candidate];
    transfer(target, m_limits.imageBytes,
             [this, candidate, name = target.name](Outcome outcome, const QByteArray& bytes) {
                 const bool usable = outcome == Outcome::complete && looksDecodable(bytes);
                 if (outcome == Outcome::complete && !usable) {
                     printLine(QStringLiteral("[Pasteboard] ERROR: %1 of %2 bytes is not a readable image.")
                                   .arg(QString::fromUtf8(name))
                                   .arg(bytes.size()));
                 }
                 if (usable) {
                     m_content.imageType = name;
                     m_content.imageBytes = bytes;
                     planText();
                 } else {
                     readImage(candidate + 1);
                 }
             });
}

void SelectionReader::planText() {
    m_candidates.clear();
    std::vector<std::pair<int, const Target*>> ranked;
    for (const Target& target : m_targets) {
        if (const auto rank = textFlavourRank(target.name)) {
            ranked.emplace_back(*rank, &target);
        }
    }
    std::stable_sort(ranked.begin(), ranked.end(),
                     [](const auto& a, const auto& b) { return a.first < b.first; });
    for (const auto& [rank, target] : ranked) {
        if (m_candidates.size() < maximumAttempts) {
            m_candidates.push_back(target);
        }
    }
    readText(0);
}

void SelectionReader::readText(std::size_t candidate) {
    if (candidate >= m_candidates.size()) {
        finish();
        return;
    }
    const Target& target = *m_candidates[candidate];
    transfer(target, m_limits.textBytes,
             [this, candidate, name = target.name](Outcome outcome, const QByteArray& bytes) {
                 if (outcome == Outcome::complete) {
                     m_content.textTarget = name;
                     m_content.textBytes = bytes;
                     finish();
                 } else if (outcome == Outcome::refused) {
                     readText(candidate + 1);
                 } else {
                     // The same text in another encoding would be as large, and as late.
                     finish();
                 }
             });
}

void SelectionReader::finish() {
    m_deadline.stop();
    if (m_done) {
        // The callback may destroy this object.
        const Done done = std::exchange(m_done, nullptr);
        done(std::move(m_content));
    }
}

} // namespace corvatto
