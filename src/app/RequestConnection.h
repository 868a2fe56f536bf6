// One client of a RequestSocket, from its first byte to the answer.
#pragma once

#include "base/FileDescriptor.h"

#include <QObject>
#include <QSocketNotifier>

#include <functional>

namespace corvatto {

// Main thread. Deletes itself when the client has gone, has been answered, or talks nonsense.
class RequestConnection : public QObject {
    Q_OBJECT

public:
    // Called once, when a whole line has come, with its text.
    using Arrived = std::function<void(RequestConnection& from, const QString& request)>;

    // `client` does not block.
    RequestConnection(FileDescriptor client, const Arrived& arrived, QObject* parent);

    // Sends `text` and hangs up. False when the client has given up, and has told its user that nothing was
    // done.
    bool answer(const QByteArray& text);

private:
    void read();
    void close();

    FileDescriptor m_client;
    Arrived m_arrived;
    QByteArray m_received;
    QSocketNotifier m_notifier;
};

} // namespace corvatto
