// One Corvatto a user: the first listens on a socket that only its user can reach, later ones tell it what is
// asked of them.
#pragma once

#include <QLocalServer>
#include <QLockFile>
#include <QString>

#include <functional>
#include <memory>

namespace corvatto {

class SingleInstance {
public:
    // The socket and the lock live in `directory`, which is created, for this user alone, if it does not
    // exist.
    explicit SingleInstance(const QString& directory);

    // Becomes the instance that answers. False when another one is there already.
    bool becomePrimary();

    // Calls `handle` from the event loop with each request. Requests of other users are not read.
    void listen(std::function<void(const QString& request)> handle);

    // Hands `request` to the instance that runs and waits for its answer, five seconds at most. False when
    // there is none, or it does not answer. For a process that does nothing else.
    bool send(const QString& request) const;

    // $XDG_RUNTIME_DIR/corvatto, else a directory of the user's own below the system's temporary one.
    static QString defaultDirectory();

private:
    void answer(QLocalSocket* socket);

    QString m_directory;
    QString m_socketPath;
    QLockFile m_lock;
    QLocalServer m_server;
    std::function<void(const QString& request)> m_handle;
};

} // namespace corvatto
