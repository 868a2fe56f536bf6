// Owns the clipboard on the program's behalf and serves its content to other programs, large content in
// pieces.
//
// It stands on the program's own connection and not on QClipboard, for three reasons: taking over needs a
// time that the server accepts, which Qt's last input event may not be; a copy made in one of our own text
// fields goes through QClipboard and must be told apart from content that the history wrote; and an image is
// offered in the bytes that are stored, encoded otherwise only for those who ask.
#pragma once

#include "platform/x11/ClipboardContent.h"
#include "platform/x11/XcbConnection.h"

#include <QTimer>

#include <functional>
#include <list>

namespace corvatto {

// Main thread.
class SelectionOwner : public XcbEventListener {
public:
    SelectionOwner(XcbConnection& connection, xcb_atom_t selection);
    ~SelectionOwner() override;

    // Takes the selection over from whoever has it. Empty content is offered as a clipboard without flavours.
    void offer(const ClipboardContent& content);

    // Takes the selection only if nobody has it. False when somebody has.
    bool offerIfUnowned(const ClipboardContent& content);

    // The window that owns the selection for us; announcements that name it are our own.
    xcb_window_t window() const { return m_window; }

    // When the server says that the last takeover happened.
    void setAcquisitionTime(xcb_timestamp_t time) { m_since = time; }

    void handleEvent(const xcb_generic_event_t& event) override;

private:
    struct Flavour {
        xcb_atom_t target;
        xcb_atom_t type;
        std::function<QByteArray()> bytes;
    };
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

    void setContent(const ClipboardContent& content);
    void addText(const ClipboardContent& content);
    void addImage(const ClipboardContent& content);
    void add(const QByteArray& target, std::function<QByteArray()> bytes);

    void answer(const xcb_selection_request_event_t& request);
    bool convert(xcb_window_t requestor, xcb_atom_t target, xcb_atom_t property);
    void answerMultiple(const xcb_selection_request_event_t& request);
    void notify(const xcb_selection_request_event_t& request, xcb_atom_t property);
    void startIncremental(xcb_window_t requestor, xcb_atom_t property, xcb_atom_t type,
                          const QByteArray& bytes);
    void sendNextPiece(std::list<Incremental>::iterator transfer);
    void forgetRequestor(xcb_window_t requestor);

    XcbConnection& m_connection;
    xcb_atom_t m_selection;
    xcb_window_t m_window;
    xcb_timestamp_t m_since = XCB_CURRENT_TIME;
    std::vector<Flavour> m_flavours;
    std::list<Incremental> m_incremental;
    std::shared_ptr<SelectionOwner*> m_self;
};

} // namespace corvatto
