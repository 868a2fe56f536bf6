// Asks the session bus whether some tray shows StatusNotifierItems, the icons that programs offer over the
// bus. Needs no display system.
#pragma once

#include <QDBusPendingCall>
#include <QObject>

namespace corvatto {

// Main thread.
class StatusNotifierHost : public QObject {
    Q_OBJECT

public:
    enum class Status {
        Present,
        Absent,       // nobody shows such items, or there is no session bus
        Unresponsive, // somebody should know, but does not answer
    };

    // Asks now, and whenever the answer may have changed.
    void startWatching();

    // Asks once. Needs no event loop to return, but one for the answer.
    Q_SLOT void query();

Q_SIGNALS:
    // The answer to each question, from the event loop.
    void answered(StatusNotifierHost::Status status);

private:
    void receiveReply(const QDBusPendingCall& call);
};

} // namespace corvatto
