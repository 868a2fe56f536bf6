// Owns the clipboard on the program's behalf and serves its content to other programs, large content in
// pieces.
//
// It stands on the program's own connection and not on QClipboard, for three reasons: taking over needs a
// time that the server accepts, which Qt's last input event may not be; a copy made in one of our own text
// fields goes through QClipboard and must be told apart from content that the history wrote; and an image is
// offered in the bytes that are stored, encoded otherwise only for those who ask.
#pragma once

#include "platform/OfferedFlavours.h"
#include "platform/x11/XcbConnection.h"

#include <QTimer>

#include <functional>
#include <list>

namespace corvatto {

// Main thread.
class SelectionOwner : public QObject, public XcbEventListener {
    Q_OBJECT

public:
    SelectionOwner(XcbConnection& connection, xcb_atom_t selection);
    ~SelectionOwner() override;

    // Takes the selection over from whoever has it. Empty content is offered as a clipboard without flavours.
    void offer(const ClipboardContent& content);

    // Takes the selection only if nobody has it. False when somebody has.
    bool offerIfUnowned(const ClipboardContent& content);

    // The window that owns the selection for us; announcements that name it are our own.
    xcb_window_t window() const { return m_window; }

    // Our takeovers that the server has not announced yet. Until it has, all that it tells came before them.
    bool hasPendingTakeover() const { return m_pendingTakeovers > 0; }

    // The server has announced that one of our takeovers happened at that time.
    void takeoverAnnounced(xcb_timestamp_t time);

    void handleEvent(const xcb_generic_event_t& event) override;

private:
    // An answer in pieces that a requestor is taking.
    struct Incremental {
        xcb_window_t requestor;
        xcb_atom_t property;
        xcb_atom_t type;
        QByteArray bytes;
        qsizetype sent = 0;
        bool lastSent = false;
        std::unique_ptr<QTimer> silence;
    };
    using Converted = std::function<void(bool isConverted)>;

    void setContent(const ClipboardContent& content);
    void takeOver();
    bool isOwnedSince(xcb_timestamp_t time) const;

    void answer(const xcb_selection_request_event_t& request);
    void answerMultiple(const xcb_selection_request_event_t& request);
    void answerPairs(const xcb_selection_request_event_t& request, std::vector<xcb_atom_t> pairs);
    void convert(xcb_window_t requestor, xcb_atom_t target, xcb_atom_t property, const Converted& done);
    void deliver(xcb_window_t requestor, xcb_atom_t property, xcb_atom_t type, const QByteArray& bytes);
    void notify(const xcb_selection_request_event_t& request, xcb_atom_t property);

    void startIncremental(xcb_window_t requestor, xcb_atom_t property, xcb_atom_t type,
                          const QByteArray& bytes);
    void sendNextPiece(std::list<Incremental>::iterator transfer);
    void endIncremental(std::list<Incremental>::iterator transfer);
    void forgetRequestor(xcb_window_t requestor);

    XcbConnection& m_connection;
    xcb_atom_t m_selection;
    xcb_window_t m_window;
    qsizetype m_bytesPerPiece;
    xcb_timestamp_t m_since = XCB_CURRENT_TIME;
    int m_pendingTakeovers = 0;
    std::shared_ptr<OfferedFlavours> m_flavours; // of this ownership; null without any
    std::list<Incremental> m_incremental;
};

} // namespace corvatto
