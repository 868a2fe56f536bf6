// Collects the content of the clipboard from its owner: first the list of targets, then the flavours that the
// history wants, one after the other. Each flavour arrives whole or counts as absent.
//
// What the owner marks secret is recognised before anything else is asked for, and nothing else is asked for
// then.
#pragma once

#include "platform/x11/ClipboardContent.h"
#include "platform/x11/SelectionTransfer.h"

#include <chrono>
#include <functional>
#include <memory>
#include <optional>

namespace corvatto {

struct SelectionLimits {
    std::chrono::milliseconds silence{5'000};     // between two signs of life of the owner
    std::chrono::milliseconds altogether{20'000}; // for all the flavours of one change
    qint64 textBytes = qint64{64} << 20;
    qint64 imageBytes = qint64{192} << 20; // an 8K screenshot as an uncompressed bitmap is 133 MB
};

// Main thread. Ends with exactly one call of its callback, unless it is destroyed before.
class SelectionReader {
public:
    // Empty content when the owner offered nothing readable, did not answer, or marked its content secret.
    using Done = std::function<void(ClipboardContent content)>;

    // `requestor` is a window of ours with PropertyChange selected; `time` is when the owner acquired
    // `selection`.
    SelectionReader(XcbConnection& connection, xcb_window_t requestor, xcb_atom_t selection,
                    xcb_timestamp_t time, const SelectionLimits& limits, Done done);
    ~SelectionReader();

    // The owner has exited: what has arrived completely is the answer.
    void ownerGone();

private:
    struct Target {
        xcb_atom_t atom;
        QByteArray name;
    };
    using Arrived = std::function<void(SelectionTransfer::Outcome, QByteArray)>;

    void readTargets();
    void handleTargets(const QByteArray& atoms);
    void nameTargets(std::vector<xcb_atom_t> atoms);
    void handleNamedTargets();
    void readHint();
    void readFiles();
    void readGnomeFiles();
    void planImage();
    void readImage(std::size_t candidate);
    void planText();
    void readText(std::size_t candidate);
    void finish();

    void transfer(const Target& target, qint64 byteLimit, Arrived arrived);
    const Target* offered(const QByteArray& name) const;

    XcbConnection& m_connection;
    xcb_window_t m_requestor;
    xcb_atom_t m_selection;
    xcb_timestamp_t m_time;
    SelectionLimits m_limits;
    Done m_done;

    std::vector<Target> m_targets;
    std::size_t m_namesMissing = 0;
    std::vector<const Target*> m_candidates; // of the flavour being read, best first
    ClipboardContent m_content;
    std::unique_ptr<SelectionTransfer> m_transfer;
    QTimer m_deadline;
    bool m_outOfTime = false;
    std::shared_ptr<SelectionReader*> m_self;
};

} // namespace corvatto
