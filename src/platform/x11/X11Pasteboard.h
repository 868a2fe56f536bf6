// The clipboard of an X11 desktop.
//
// XFixes announces each change of ownership; the new content is then collected asynchronously, and the change
// count rises once the answer is in, be it that there is nothing to read. Own writes count at once. When the
// owner of the clipboard exits, its content, as far as it was collected, is offered again, and no count
// rises: for the user, nothing has changed. After an explicit clear nothing comes back, and of a secret
// nothing was ever collected.
#pragma once

#include "platform/Pasteboard.h"
#include "platform/x11/ClipboardHandOver.h"
#include "platform/x11/SelectionOwner.h"
#include "platform/x11/SelectionReader.h"

namespace corvatto {

// Main thread.
class X11Pasteboard : public Pasteboard, public XcbEventListener {
public:
    explicit X11Pasteboard(XcbConnection& connection, const SelectionLimits& limits = {});
    ~X11Pasteboard() override;

    qint64 changeCount() const override { return m_changeCount; }
    QList<QUrl> fileURLs() const override;
    std::optional<Image> image() const override;
    std::optional<QByteArray> imageData(ImageType type) const override;
    std::optional<QString> string() const override;

    void clearContents() override;
    void setString(const QString& text) override;
    void writeFileURLs(const QList<QUrl>& urls) override;
    void writeImage(const Image& image) override;

    void handOver(std::function<void()> done) override;

    void handleEvent(const xcb_generic_event_t& event) override;

private:
    // An ownership of the selection. The same window may own it again at a later time, with other content.
    struct Ownership {
        xcb_window_t owner = XCB_NONE;
        xcb_timestamp_t since = XCB_CURRENT_TIME;
        bool operator==(const Ownership&) const = default;
    };

    void readInitialContent();
    void announced(const Ownership& ownership);
    void read(const Ownership& ownership, bool isChange);
    void ownerGone();
    void offerAgain();
    void offer();
    void write(ClipboardContent content);

    XcbConnection& m_connection;
    SelectionLimits m_limits;
    xcb_atom_t m_selection;
    xcb_window_t m_requestor;
    quint8 m_firstXFixesEvent = 0;
    SelectionOwner m_owner;

    qint64 m_changeCount = 0;
    ClipboardContent m_content;
    Ownership m_ownership;    // the last one announced
    bool m_ownerGone = false; // that owner has exited
    // Takeovers of ours that have not been announced yet. Until they are, what is announced came before them.
    int m_unannouncedTakeovers = 0;
    std::unique_ptr<SelectionReader> m_reader; // while content is being collected
    std::unique_ptr<ClipboardHandOver> m_handOver;
    QTimer m_emptying; // carries out a clear that no write follows
};

} // namespace corvatto
