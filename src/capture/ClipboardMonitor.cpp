#include "capture/ClipboardMonitor.h"

#include "base/FilePath.h"
#include "base/TextDecoding.h"
#include "capture/ImageStorage.h"
#include "settings/PollingInterval.h"
#include "store/ContentHash.h"

#include <QPointer>

#include <algorithm>

namespace corvatto {
namespace {

// Identifies an image entry. The prefix keeps it apart from the hashes of texts and files.
QString imageHash(const Image& image) {
    const QByteArray& png = image.pngData();
    if (!png.isEmpty()) {
        return sha256(QStringLiteral("image|") + sha256Hex(png));
    }
    const QByteArray tiff = image.tiffData();
    if (!tiff.isEmpty()) {
        return sha256(QStringLiteral("image|") + sha256Hex(tiff));
    }
    return sha256(QStringLiteral("image|") + image.description());
}

// Looks at no more than it has to, because the text may be of any size.
bool isBlank(const QByteArray& utf8) {
    constexpr qsizetype window = 4096; // bytes
    for (qsizetype begin = 0; begin < utf8.size();) {
        const QByteArrayView part = utf8Prefix(QByteArrayView(utf8).sliced(begin), window);
        const QString text = decodeText("UTF8_STRING", part.toByteArray()).text;
        if (!std::all_of(text.cbegin(), text.cend(), [](QChar character) { return character.isSpace(); })) {
            return false;
        }
        begin += part.size();
    }
    return true;
}

QStringList copiedPaths(const Pasteboard& pasteboard) {
    QStringList paths;
    for (const QUrl& url : pasteboard.fileURLs()) {
        // A directory is the same one with and without a slash behind its name.
        paths.append(pathLine(pathOf(url.adjusted(QUrl::StripTrailingSlash))));
    }
    return paths;
}

} // namespace

ClipboardMonitor::ClipboardMonitor(ClipboardStore& store, Pasteboard& pasteboard, UserDefaults& defaults)
    : m_timer(this), m_lastChangeCount(pasteboard.changeCount()), m_store(store), m_pasteboard(pasteboard),
      m_defaults(defaults) {
    m_timer.setSingleShot(true);
    m_timer.setTimerType(Qt::PreciseTimer); // or the ticks would not be where they are due
    connect(&m_timer, &QTimer::timeout, this, &ClipboardMonitor::checkPasteboard);
}

ClipboardMonitor::~ClipboardMonitor() {
    stop();
}

void ClipboardMonitor::start() {
    ignoreCurrentContent();
    scheduleTimer();
    observeIntervalChanges();
    m_pasteboard.onChange = [this] {
        waitForTick();
    };
}

void ClipboardMonitor::stop() {
    m_timer.stop();
    m_ticks.invalidate();
    m_pasteboard.onChange = nullptr;
    disconnect(m_defaultsObserver);
    m_defaultsObserver = {};
}

void ClipboardMonitor::checkNow() {
    if (m_ticks.isValid()) {
        checkPasteboard();
    }
}

void ClipboardMonitor::ignoreCurrentContent() {
    m_lastChangeCount = m_pasteboard.changeCount();
    m_timer.stop();
}

std::chrono::milliseconds ClipboardMonitor::effectiveInterval() const {
    return std::chrono::round<std::chrono::milliseconds>(
        std::chrono::duration<double>(pollingInterval(m_defaults)));
}

void ClipboardMonitor::scheduleTimer() {
    m_interval = effectiveInterval();
    m_ticks.start();
    m_timer.stop();
    waitForTick();
}

void ClipboardMonitor::waitForTick() {
    if (!m_timer.isActive() && m_pasteboard.changeCount() != m_lastChangeCount) {
        m_timer.start(m_interval - std::chrono::milliseconds(m_ticks.elapsed()) % m_interval);
    }
}

void ClipboardMonitor::observeIntervalChanges() {
    disconnect(m_defaultsObserver);
    m_defaultsObserver = connect(&m_defaults, &UserDefaults::didChange, this,
                                 [this, lastApplied = effectiveInterval()]() mutable {
                                     // Sent for every write to any setting. The timer must not start over
                                     // unless the interval has changed.
                                     const std::chrono::milliseconds interval = effectiveInterval();
                                     if (interval == lastApplied) {
                                         return;
                                     }
                                     lastApplied = interval;
                                     scheduleTimer();
                                 });
}

void ClipboardMonitor::checkPasteboard() {
    if (m_pasteboard.changeCount() == m_lastChangeCount) {
        return;
    }
    // Before anything is read, so that each change is dealt with once, also one that gives no entry.
    ignoreCurrentContent();
    const QString sourceApp = m_pasteboard.sourceApplicationName();
    // Files come first because file managers offer their names as text and their icons as images as well.
    if (const QStringList paths = copiedPaths(m_pasteboard); !paths.isEmpty()) {
        m_recordings.add([=, this] { recordFiles(paths, sourceApp); });
        return;
    }
    const auto image = ImageStorage::imageFromPasteboard(m_pasteboard);
    // Of an image too, for when it cannot be saved: by then, the clipboard may hold something else.
    const auto text = m_pasteboard.utf8String();
    m_recordings.add([=, this] {
        if (image) {
            recordImage(*image, text, sourceApp);
        } else {
            recordText(text, sourceApp);
        }
    });
}

void ClipboardMonitor::finish() {
    m_recordings.finish();
}

// Tells of a capture that has reached the store, if the monitor is still there.
std::function<void()> ClipboardMonitor::announcement() {
    return [self = QPointer(this)] {
        if (self && self->onNewItem) {
            self->onNewItem();
        }
    };
}

void ClipboardMonitor::recordFiles(const QStringList& paths, const QString& sourceApp) {
    m_store.insertOrUpdateFile(paths, sourceApp, announcement());
}

// The hash takes a frame, the thumbnail two, and the disk as long as it likes.
void ClipboardMonitor::recordImage(const Image& image, const std::optional<QByteArray>& text,
                                   const QString& sourceApp) {
    struct Result {
        QString hash;
        std::optional<ImageStorage::SavedImage> saved;
    };
    const auto save = [image, imagesDir = m_store.imagesDir(), thumbnailsDir = m_store.thumbnailsDir()] {
        const QString hash = imageHash(image);
        return Result{hash, ImageStorage::saveImage(image, hash, imagesDir, thumbnailsDir)};
    };
    const auto files = m_store.keepImageFiles();
    m_recordings.goOnBeside(save, [=, this](const Result& result) {
        if (!result.saved) {
            recordText(text, sourceApp); // better than nothing
            return;
        }
        m_store.insertOrUpdateImage(result.saved->imagePath, result.saved->thumbnailPath, result.hash,
                                    result.saved->preview, sourceApp,
                                    [files, announce = announcement()] { announce(); });
    });
}

void ClipboardMonitor::recordText(const std::optional<QByteArray>& text, const QString& sourceApp) {
    if (!text || isBlank(*text)) {
        return;
    }
    m_store.insertOrUpdate(*text, sourceApp, announcement());
}

} // namespace corvatto
