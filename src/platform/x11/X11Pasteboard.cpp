#include "platform/x11/X11Pasteboard.h"

#include "base/Diagnostics.h"
#include "base/ImageDecoding.h"

#include <chrono>

namespace corvatto {
namespace {

// Longer than the longest polling interval, so that whoever looks at a change finds its picture decoded.
constexpr std::chrono::seconds decodedImageLifetime{6};

constexpr std::chrono::milliseconds rereadingDelay{200};

// A clipboard manager that takes the clipboard over from a program that exits does so within some
// milliseconds. Who takes it over at the same moment confuses some.
constexpr std::chrono::milliseconds managersPrecedence{100};

// Marks what a clipboard manager offers in place of a clipboard that its owner has left.
constexpr char replacesEmptyTarget[] = "application/x-kde-onlyReplaceEmpty";

} // namespace

X11Pasteboard::X11Pasteboard(XcbConnection& connection, NameOfSource nameOfSource,
                             const ClipboardReadLimits& limits)
    : m_connection(connection), m_nameOfSource(std::move(nameOfSource)), m_limits(limits),
      m_selection(connection.atom("CLIPBOARD")), m_managerSelection(connection.atom("CLIPBOARD_MANAGER")),
      m_requestor(connection.createMessageWindow(XCB_EVENT_MASK_PROPERTY_CHANGE)), m_properties(connection),
      m_owner(connection, m_selection) {
    m_clearWithoutWrite.setSingleShot(true);
    m_clearWithoutWrite.callOnTimeout([this] { offer(); });
    m_offerAgain.setSingleShot(true);
    m_offerAgain.setInterval(managersPrecedence);
    m_offerAgain.callOnTimeout([this] { offerAgain(); });
    m_rereading.setSingleShot(true);
    m_rereading.setInterval(rereadingDelay);
    m_rereading.callOnTimeout([this] { read(m_ownership, Meaning::aChangeIfDifferent); });
    m_forgetImage.setSingleShot(true);
    m_forgetImage.setInterval(decodedImageLifetime);
    m_forgetImage.callOnTimeout([this] { m_image.reset(); });
    watchSelections();
}

X11Pasteboard::~X11Pasteboard() {
    m_reading.reset();
    m_connection.removeListener(*this);
    xcb_destroy_window(m_connection.raw(), m_requestor);
    m_connection.flush();
}

void X11Pasteboard::watchSelections() {
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
    constexpr quint32 everyChange = XCB_XFIXES_SELECTION_EVENT_MASK_SET_SELECTION_OWNER |
                                    XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_WINDOW_DESTROY |
                                    XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_CLIENT_CLOSE;
    xcb_xfixes_select_selection_input(raw, m_requestor, m_selection, everyChange);
    xcb_xfixes_select_selection_input(raw, m_requestor, m_managerSelection, everyChange);
    const XcbPointer<xcb_get_selection_owner_reply_t> manager(
        xcb_get_selection_owner_reply(raw, xcb_get_selection_owner(raw, m_managerSelection), nullptr));
    m_manager = manager ? manager->owner : xcb_window_t{XCB_NONE};
    readInitialContent();
}

void X11Pasteboard::readInitialContent() {
    // Content that was there before us is no change, but it too survives the exit of its owner.
    xcb_connection_t* raw = m_connection.raw();
    const XcbPointer<xcb_get_selection_owner_reply_t> owner(
        xcb_get_selection_owner_reply(raw, xcb_get_selection_owner(raw, m_selection), nullptr));
    if (owner && owner->owner != XCB_NONE) {
        read({owner->owner, XCB_CURRENT_TIME}, Meaning::noChange);
    }
    m_connection.flush();
}

void X11Pasteboard::handleEvent(const xcb_generic_event_t& event) {
    if ((event.response_type & 0x7F) != m_firstXFixesEvent + XCB_XFIXES_SELECTION_NOTIFY) {
        return;
    }
    const auto& notify = reinterpret_cast<const xcb_xfixes_selection_notify_event_t&>(event);
    if (notify.selection == m_managerSelection) {
        m_manager = notify.owner;
    } else if (notify.selection == m_selection) {
        ownershipChanged(notify);
    }
}

void X11Pasteboard::ownershipChanged(const xcb_xfixes_selection_notify_event_t& event) {
    const bool isTakeover = event.subtype == XCB_XFIXES_SELECTION_EVENT_SET_SELECTION_OWNER;
    if (isTakeover && event.owner == m_owner.window()) {
        m_rereading.stop();
        m_ownership = {event.owner, event.selection_timestamp};
        m_owner.takeoverAnnounced(event.selection_timestamp);
    } else if (m_owner.hasPendingTakeover()) {
        return; // overtaken by our own write
    } else if (isTakeover) {
        announced({event.owner, event.selection_timestamp});
    } else {
        ownerGone();
    }
}

void X11Pasteboard::announced(const Ownership& ownership) {
    if (ownership == m_ownership) {
        // The same takeover told again, or another one at the same time, as of a program that copies twice in
        // answer to one key. Only the content tells. Looked at after a while, because some programs do this
        // without end.
        if (!m_rereading.isActive()) {
            m_rereading.start();
        }
        return;
    }
    m_ownership = ownership;
    if (ownership.owner == XCB_NONE) {
        m_reading.reset();
        m_rereading.stop();
        m_isOwnerGone = false;
        setContent({});
        ++m_changeCount;
    } else {
        read(ownership, Meaning::aChange);
    }
}

void X11Pasteboard::read(const Ownership& ownership, Meaning meaning) {
    // A change that is overtaken by the next one before it was read is not there any more to be recorded. The
    // change before stays what it is until the new one is complete.
    m_clearWithoutWrite.stop();
    m_rereading.stop();
    m_isOwnerGone = false;
    const QString source = m_nameOfSource(ownership.owner);
    const bool isByManager = isOwnedByManager();
    auto selection = std::make_unique<SelectionSource>(
        m_connection, m_properties, SelectionSource::Ownership{m_requestor, m_selection, ownership.since},
        m_limits.silence);
    m_reading = std::make_unique<ClipboardReading>(
        std::move(selection), m_limits,
        [this, meaning, source, isByManager](ClipboardContent content, std::optional<Image> image) {
            const auto ended = std::move(m_reading); // it makes this call
            // A manager that goes on offering what the user has copied before makes no new copy of it.
            const bool isRescue = isByManager || ended->isOffered(replacesEmptyTarget);
            const bool mayBeTheSame = isRescue || meaning == Meaning::aChangeIfDifferent;
            const bool isChange =
                meaning != Meaning::noChange && !(mayBeTheSame && content.isSameCopyAs(m_content));
            setContent(std::move(content), std::move(image));
            if (isChange) {
                m_sourceApplication = source;
                ++m_changeCount;
            }
            offerAgain();
        });
}

// Whether the owner is the desktop's clipboard manager, to which programs that exit hand their content.
bool X11Pasteboard::isOwnedByManager() const {
    return m_manager != XCB_NONE && m_connection.isOfSameClient(m_manager, m_ownership.owner);
}

void X11Pasteboard::setContent(ClipboardContent content, std::optional<Image> image) {
    m_content = std::move(content);
    m_image = std::move(image);
    if (m_image) {
        m_forgetImage.start();
    }
}

void X11Pasteboard::ownerGone() {
    m_rereading.stop();
    m_isOwnerGone = true;
    m_ownership = {};
    if (m_reading) {
        m_reading->ownerGone();
    } else if (m_manager != XCB_NONE) {
        m_offerAgain.start();
    } else {
        offerAgain();
    }
}

void X11Pasteboard::offerAgain() {
    if (m_isOwnerGone && !m_content.isEmpty() && m_owner.offerIfUnowned(m_content)) {
        m_isOwnerGone = false;
    }
}

void X11Pasteboard::offer() {
    m_owner.offer(m_content);
    m_isOwnerGone = false;
}

void X11Pasteboard::clearContents() {
    m_reading.reset();
    m_rereading.stop();
    setContent({});
    ++m_changeCount;
    // A write usually follows at once. Other programs then see one change, and not an empty clipboard in
    // between, which some clipboard managers would fill with what they remember.
    m_clearWithoutWrite.start(0);
}

void X11Pasteboard::write(ClipboardContent content) {
    m_clearWithoutWrite.stop();
    m_reading.reset();
    m_rereading.stop();
    setContent(std::move(content));
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
    if (m_save) {
        return; // whoever asks again and again must not put off the end
    }
    const bool isOurs = m_ownership.owner == m_owner.window() || m_owner.hasPendingTakeover();
    if (isOurs && !m_content.isEmpty()) {
        m_save = std::make_unique<ClipboardManagerSave>(m_connection, m_owner.window(), std::move(done));
    } else {
        QTimer::singleShot(0, &m_connection, std::move(done));
    }
}

QList<QUrl> X11Pasteboard::fileURLs() const {
    return m_content.fileURLs();
}

std::optional<Image> X11Pasteboard::image() const {
    if (m_image || m_content.imageBytes.isNull()) {
        return m_image;
    }
    auto pixels = decodeImage(m_content.imageBytes);
    return pixels ? std::optional(Image(std::move(*pixels))) : std::nullopt;
}

std::optional<QByteArray> X11Pasteboard::imageData(ImageType type) const {
    const char* wanted = type == ImageType::Tiff ? "image/tiff" : "image/png";
    if (m_content.imageBytes.isNull() || m_content.imageType != wanted) {
        return std::nullopt;
    }
    return m_content.imageBytes;
}

std::optional<QString> X11Pasteboard::string() const {
    auto text = m_content.text();
    if (!text) {
        return std::nullopt;
    }
    if (text->hadInvalidBytes) {
        printLine(QStringLiteral("[Pasteboard] ERROR: %1 holds invalid bytes, which are replaced.")
                      .arg(QString::fromUtf8(m_content.textTarget)));
    }
    return std::move(text->text);
}

} // namespace corvatto
