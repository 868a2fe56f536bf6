// Lets only one Corvatto run for each user. The first process listens on a socket that only its user can
// reach; later ones send it their request (command/InstanceRequest.h).
#pragma once

#include "app/RequestSocket.h"

#include <QLockFile>
#include <QString>

#include <functional>
#include <string>

namespace corvatto {

class SingleInstance {
public:
    // Keeps the socket and a lock in `directory`, which is created if necessary, accessible to this user
    // only.
    explicit SingleInstance(const std::string& directory);

    // Becomes the instance that answers requests. False when there is one already.
    bool becomePrimary();

    // Calls `handle` from the event loop with each request. Requests of other users are not read.
    void listen(std::function<void(const QString& request)> handle);

    // What to tell who asks for the status: one line.
    void setStatus(const QString& status) { m_status = status; }

private:
    void answer(RequestConnection& client, const QString& request);

    std::string m_directory;
    QLockFile m_lock;
    RequestSocket m_socket;
    QString m_status;
    std::function<void(const QString& request)> m_handle;
};

} // namespace corvatto
