// Watches the clipboard by polling its change count and records what it finds: copied files before an image
// before text. Each change is dealt with exactly once, whether it gives an entry or not, and in the order of
// the copies: while the files of an image are written, which waits for the disk, what is found after it waits
// as well. Follows the polling-interval setting while it runs.
//
// The ticks come at whole intervals after the start, but those that would find nothing are left out: an idle
// program does not wake the processor.
#pragma once

#include "base/OrderedWork.h"
#include "platform/Pasteboard.h"
#include "platform/UserDefaults.h"
#include "store/ClipboardStore.h"

#include <QElapsedTimer>
#include <QMetaObject>
#include <QObject>
#include <QTimer>

#include <chrono>
#include <functional>

namespace corvatto {

// Reports no errors: what cannot be read or stored is passed over, and whoever failed has printed its line. A
// QObject so that others can hold it weakly. Main thread.
class ClipboardMonitor : public QObject {
    Q_OBJECT

public:
    // All three outlive the monitor. A new monitor is stopped.
    ClipboardMonitor(ClipboardStore& store, Pasteboard& pasteboard, UserDefaults& defaults);
    ~ClipboardMonitor() override;

    // Fired after every capture that reached the store, which may be some time after the look that found it.
    std::function<void()> onNewItem;

    // Starts polling. What is on the clipboard at this moment is not recorded. Called while stopped.
    void start();
    void stop();

    // Looks at the clipboard at once, as at the next tick, when that would be too late: before the history is
    // shown, before the clipboard is written to, and at the end. A stopped monitor does nothing.
    void checkNow();

    // Waits until everything that was found has been given to the store: before that is cleared, and at the
    // end.
    void finish();

    // Counts what is on the clipboard now as dealt with. For whoever writes to the clipboard and does not
    // want that recorded.
    void ignoreCurrentContent();

    // The change count that was last dealt with.
    qint64 lastChangeCount() const { return m_lastChangeCount; }

private:
    std::chrono::milliseconds effectiveInterval() const;
    void scheduleTimer();
    void waitForTick();
    void observeIntervalChanges();

    void checkPasteboard();
    void recordFiles(const QStringList& paths, const QString& sourceApp);
    void recordImage(const Image& image, const std::optional<QByteArray>& text, const QString& sourceApp);
    void recordText(const std::optional<QByteArray>& text, const QString& sourceApp);
    std::function<void()> announcement();

    QTimer m_timer;        // active while a change waits for its tick
    QElapsedTimer m_ticks; // since the moment that ticks are counted from; valid exactly while it runs
    std::chrono::milliseconds m_interval{};
    OrderedWork m_recordings;
    qint64 m_lastChangeCount = 0;
    ClipboardStore& m_store;
    Pasteboard& m_pasteboard;
    UserDefaults& m_defaults;
    QMetaObject::Connection m_defaultsObserver;
};

} // namespace corvatto
