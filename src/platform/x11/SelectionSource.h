// The owner of an X selection as a source of clipboard content: its list of targets, and the bytes of each.
#pragma once

#include "platform/ClipboardReading.h"
#include "platform/x11/SelectionTransfer.h"

#include <memory>

namespace corvatto {

// The properties that receive the answers, used in turn: a late answer to a transfer that was given up lands
// in a property that nobody looks at. One for each requestor window.
class TransferProperties {
public:
    explicit TransferProperties(XcbConnection& connection) : m_connection(connection) {}
    xcb_atom_t next();

    // The name of the n-th property that is used.
    static QByteArray name(int n);

private:
    XcbConnection& m_connection;
    int m_used = 0;
};

// Main thread.
class SelectionSource : public ClipboardSource {
public:
    struct Ownership {
        xcb_window_t requestor; // a window of ours with PropertyChange selected
        xcb_atom_t selection;
        xcb_timestamp_t since; // when the owner acquired the selection
    };

    // The connection and the properties outlive the source.
    SelectionSource(XcbConnection& connection, TransferProperties& properties, const Ownership& ownership,
                    std::chrono::milliseconds silenceLimit);

    void list(Listed done) override;
    void fetch(const QByteArray& target, qint64 byteLimit, Fetched done) override;
    void ownerGone() override;

private:
    struct Listing;

    void transfer(xcb_atom_t target, qint64 byteLimit, SelectionTransfer::Done done);
    void nameTargets(const QByteArray& bytes, const Listed& done);
    QByteArray encodingOf(const QByteArray& target, xcb_atom_t type);

    XcbConnection& m_connection;
    TransferProperties& m_properties;
    Ownership m_ownership;
    std::chrono::milliseconds m_silenceLimit;
    std::unique_ptr<SelectionTransfer> m_transfer;
    std::shared_ptr<Listing> m_listing; // while the names of targets are asked for
};

} // namespace corvatto
