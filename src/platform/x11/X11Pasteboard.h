// The clipboard of an X11 desktop.
//
// XFixes announces each change of ownership; the new content is then collected asynchronously, and the change
// count rises once the answer is in, even if that is that there is nothing to read. Own writes count at once.
// When the owner of the clipboard exits, its content, as far as it was collected, is offered again, and no
// count rises: for the user, nothing has changed. After an explicit clear nothing comes back, and of a secret
// nothing was ever collected.
#pragma once

#include "platform/Pasteboard.h"
#include "platform/x11/ClipboardManagerSave.h"
#include "platform/x11/SelectionOwner.h"
#include "platform/x11/SelectionSource.h"

#include <xcb/xfixes.h>

namespace corvatto {

// Main thread.
class X11Pasteboard : public Pasteboard, public XcbEventListener {
public:
    // The display name of the application that was copied in, when that window takes the clipboard over.
    using NameOfSource = std::function<QString(xcb_window_t owner)>;

    // The connection, and what the function refers to, outlive the pasteboard.
    X11Pasteboard(XcbConnection& connection, NameOfSource nameOfSource,
                  const ClipboardReadLimits& limits = {});
    ~X11Pasteboard() override;

    qint64 changeCount() const override { return m_changeCount; }
    QString sourceApplicationName() const override { return m_sourceApplication; }
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
    enum class Meaning { aChange, aChangeIfDifferent, noChange };

    void watchSelections();
    void readInitialContent();
    void ownershipChanged(const xcb_xfixes_selection_notify_event_t& event);
    void announced(const Ownership& ownership);
    void read(const Ownership& ownership, Meaning meaning);
    bool isOwnedByManager() const;
    void ownerGone();
    void offerAgain();
    void offer();
    void setContent(ClipboardContent content, std::optional<Image> image = std::nullopt);
    void write(ClipboardContent content);

    XcbConnection& m_connection;
    NameOfSource m_nameOfSource;
    ClipboardReadLimits m_limits;
    xcb_atom_t m_selection;
    xcb_atom_t m_managerSelection;
    xcb_window_t m_requestor;
    TransferProperties m_properties;
    quint8 m_firstXFixesEvent = 0;
    SelectionOwner m_owner;

    qint64 m_changeCount = 0;
    ClipboardContent m_content; // of the last change
    QString m_sourceApplication;
    std::optional<Image> m_image; // decoded from m_content, for as long as a look at the change may take
    QTimer m_forgetImage;
    Ownership m_ownership;             // the last one announced
    xcb_window_t m_manager = XCB_NONE; // which the desktop's clipboard manager owns its own selection with
    bool m_isOwnerGone = false;        // the owner that was announced last has exited
    QTimer m_offerAgain;
    QTimer m_rereading;                          // after the same ownership was announced again
    std::unique_ptr<ClipboardReading> m_reading; // while content is being collected
    std::unique_ptr<ClipboardManagerSave> m_save;
    QTimer m_clearWithoutWrite; // carries out a clear that no write follows
};

} // namespace corvatto
