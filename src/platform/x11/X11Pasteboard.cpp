#include "platform/x11/X11Pasteboard.h"

#include "base/Diagnostics.h"
#include "base/ImageDecoding.h"
#include "base/TextDecoding.h"
#include "base/UriList.h"

#include <xcb/xfixes.h>

namespace corvatto {

X11Pasteboard::X11Pasteboard(XcbConnection& connection, const SelectionLimits& limits)
    : m_connection(connection), m_limits(limits), m_selection(connection.atom("CLIPBOARD")),
      m_requestor(connection.createMessageWindow(XCB_EVENT_MASK_PROPERTY_CHANGE)),
      m_owner(connection, m_selection) {
    m_emptying.setSingleShot(true);
    m_emptying.callOnTimeout([this] { offer(); });

    xcb_connection_t* raw = m_connection.raw();
    const xcb_query_extension_reply_t* extension = xcb_get_extension_data(raw, &xcb_xfixes_id);
    if (extension == nullptr || extension->present == 0) {
        printLine(u"[Pasteboard] ERROR: The X server lacks XFixes, copies cannot be noticed.");
        return;
    }
    m_firstXFixesEvent = extension->first_event;
    const XcbPointer<xcb_xfixes_query_version_reply_t> version(xcb_xfixes_query_version_reply(
        raw, xcb_xfixes_query_version(raw, XCB_XFIXES_MAJOR_VERSION, XCB_XFIXES_MINOR_VERSION), nullptr));
    m_connection.addListener(*this);
    xcb_xfixes_select_selection_input(raw, m_requestor, m_selection,
                                      XCB_XFIXES_SELECTION_EVENT_MASK_SET_SELECTION_OWNER |
                                          XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_WINDOW_DESTROY |
                                          XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_CLIENT_CLOSE);
    readInitialContent();
}

X11Pasteboard::~X11Pasteboard() {
    m_reader.reset();
    m_connection.removeListener(*this);
    xcb_destroy_window(m_connection.raw(), m_requestor);
    m_connection.flush();
}

void X11Pasteboard::readInitialContent() {
    // Content that was there before us is no change, but it too survives the exit of its owner.
    xcb_connection_t* raw = m_connection.raw();
    const XcbPointer<xcb_get_selection_owner_reply_t> owner(
        xcb_get_selection_owner_reply(raw, xcb_get_selection_owner(raw, m_selection), nullptr));
    if (owner && owner->owner != XCB_NONE) {
        read({owner->owner, XCB_CURRENT_TIME}, false);
    }
    m_connection.flush();
}

void X11Pasteboard::handleEvent(const xcb_generic_event_t& event) {
    if ((event.response_type & 0x7F) != m_firstXFixesEvent + XCB_XFIXES_SELECTION_NOTIFY) {
        return;
    }
    const auto& notify = reinterpret_cast<const xcb_xfixes_selection_notify_event_t&>(event);
    if (notify.selection != m_selection) {
        return;
    }
    const bool isTakeover = notify.subtype == XCB_XFIXES_SELECTION_EVENT_SET_SELECTION_OWNER;
    if (isTakeover && notify.owner == m_owner.window()) {
        --m_unannouncedTakeovers;
        m_ownership = {notify.owner, notify.selection_timestamp};
        m_owner.setAcquisitionTime(notify.selection_timestamp);
    } else if (m_unannouncedTakeovers > 0) {
        return; // overtaken by our own write
    } else if (isTakeover) {
        announced({notify.owner, notify.selection_timestamp});
    } else {
        ownerGone();
    }
}

void X11Pasteboard::announced(const Ownership& ownership) {
    if (ownership == m_ownership) {
        return; // announced again, with nothing new to read
    }
    m_ownership = ownership;
    if (ownership.owner == XCB_NONE) {
        m_reader.reset();
        m_content = {};
        ++m_changeCount;
    } else {
        read(ownership, true);
    }
}

void X11Pasteboard::read(const Ownership& ownership, bool isChange) {
    // A change that is overtaken by the next one before it was read is not there any more to be recorded.
    m_emptying.stop();
    m_content = {};
    m_ownerGone = false;
    m_reader = std::make_unique<SelectionReader>(m_connection, m_requestor, m_selection, ownership.since,
                                                 m_limits, [this, isChange](ClipboardContent content) {
                                                     m_reader.reset();
                                                     m_content = std::move(content);
                                                     m_changeCount += isChange ? 1 : 0;
                                                     offerAgain();
                                                 });
}

void X11Pasteboard::ownerGone() {
    m_ownerGone = true;
    m_ownership = {};
    if (m_reader) {
        m_reader->ownerGone();
    } else {
        offerAgain();
    }
}

void X11Pasteboard::offerAgain() {
    if (m_ownerGone && !m_content.isEmpty() && m_owner.offerIfUnowned(m_content)) {
        ++m_unannouncedTakeovers;
        m_ownerGone = false;
    }
}

void X11Pasteboard::offer() {
    m_owner.offer(m_content);
    ++m_unannouncedTakeovers;
    m_ownerGone = false;
}

void X11Pasteboard::clearContents() {
    m_reader.reset();
    m_content = {};
    ++m_changeCount;
    // A write usually follows at once. Other programs then see one change, and not an empty clipboard in
    // between, which some clipboard managers would fill with what they remember.
    m_emptying.start(0);
}

void X11Pasteboard::write(ClipboardContent content) {
    m_emptying.stop();
    m_reader.reset();
    m_content = std::move(content);
    ++m_changeCount;
    offer();
}

void X11Pasteboard::setString(const QString& text) {
    write(ClipboardContent::ofText(text));
}

void X11Pasteboard::writeFileURLs(const QList<QUrl>& urls) {
    write(ClipboardContent::ofFileURLs(urls));
}

void X11Pasteboard::writeImage(const Image& image) {
    write(ClipboardContent::ofImage(image));
}

void X11Pasteboard::handOver(std::function<void()> done) {
    if (m_handOver) {
        return; // whoever asks again and again must not put off the end
    }
    const bool isOurs = m_ownership.owner == m_owner.window() && !m_content.isEmpty();
    if (isOurs) {
        m_handOver = std::make_unique<ClipboardHandOver>(m_connection, m_owner.window(), std::move(done));
    } else {
        QTimer::singleShot(0, &m_connection, std::move(done));
    }
}

QList<QUrl> X11Pasteboard::fileURLs() const {
    const QList<QUrl> urls = fileURLsFromUriList(m_content.uriList);
    return urls.isEmpty() ? fileURLsFromGnomeCopiedFiles(m_content.gnomeCopiedFiles) : urls;
}

std::optional<Image> X11Pasteboard::image() const {
    if (m_content.imageBytes.isNull()) {
        return std::nullopt;
    }
    auto pixels = decodeImage(m_content.imageBytes);
    if (!pixels) {
        printLine(QStringLiteral("[Pasteboard] ERROR: Cannot decode %1 of %2 bytes.")
                      .arg(QString::fromUtf8(m_content.imageType))
                      .arg(m_content.imageBytes.size()));
        return std::nullopt;
    }
    return Image(std::move(*pixels));
}

std::optional<QByteArray> X11Pasteboard::imageData(ImageType type) const {
    const char* wanted = type == ImageType::Tiff ? "image/tiff" : "image/png";
    if (m_content.imageBytes.isNull() || m_content.imageType != wanted) {
        return std::nullopt;
    }
    return m_content.imageBytes;
}

std::optional<QString> X11Pasteboard::string() const {
    if (m_content.textBytes.isNull()) {
        return std::nullopt;
    }
    DecodedText decoded = decodeText(m_content.textTarget, m_content.textBytes);
    if (decoded.hadInvalidBytes) {
        printLine(QStringLiteral("[Pasteboard] ERROR: %1 holds invalid bytes, which are replaced.")
                      .arg(QString::fromUtf8(m_content.textTarget)));
    }
    return std::move(decoded.text);
}

} // namespace corvatto
