// The one system-wide shortcut: registers the combination that the settings hold and calls back on each
// press.
#pragma once

#include "platform/HotKeyCenter.h"
#include "platform/UserDefaults.h"

#include <QObject>

#include <functional>

namespace corvatto {

// A combination that cannot be registered costs one printed line as soon as that is known; the program goes
// on without a shortcut, and the next change of the settings or registerIfMissing() tries again. Main thread.
class HotKeyManager : public QObject {
    Q_OBJECT

public:
    // Both outlive the manager. Nothing is registered yet.
    HotKeyManager(HotKeyCenter& center, const UserDefaults& defaults);
    ~HotKeyManager() override;

    // Called from the event loop for each press. May be unset.
    std::function<void()> onHotKeyPressed;

    // Registers the stored combination. Called only while nothing is installed.
    void registerStoredHotKey();

    // Replaces what is registered. Both values fit in 32 bits unsigned and stand for no default.
    void reregister(qint64 keyCode, qint64 modifiers);

    // Tries again to register the stored combination, if none is registered: it may have become free.
    void registerIfMissing();

    // Returns to the state before registration.
    void unregister();

    // What triggers the shortcut, in the desktop's words, where the desktop has decided that. Else empty: it
    // is what the settings hold.
    const QString& trigger() const { return m_trigger; }

Q_SIGNALS:
    void triggerChanged(const QString& trigger);

private:
    void registerHotKey(qint64 keyCode, qint64 modifiers);
    void setTrigger(const QString& trigger);

    HotKeyCenter& m_center;
    const UserDefaults& m_defaults;
    EventHotKeyRef m_hotKeyRef = 0; // registered, or about to be
    EventHandlerRef m_handlerRef = 0;
    QString m_trigger;
};

} // namespace corvatto
