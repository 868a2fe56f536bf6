// Lets only one Corvatto run for each user. The first process listens on a socket that only its user can
// reach; later ones send it their request.
#pragma once

#include <QLocalServer>
#include <QLockFile>
#include <QString>

#include <functional>
#include <memory>

namespace corvatto {

class SingleInstance {
public:
    // Keeps the socket and a lock in `directory`, which is created if necessary, accessible to this user
    // only.
    explicit SingleInstance(const QString& directory);

    // Becomes the instance that answers requests. False when there is one already.
    bool becomePrimary();

    // Calls `handle` from the event loop with each request. Requests of other users are not read.
    void listen(std::function<void(const QString& request)> handle);

    // What to tell who asks for the status: one line.
    void setStatus(const QString& status) { m_status = status; }

    enum class Answer {
        Done,  // the running instance does what it was asked to
        None,  // it does not answer, and will not do it later
        Nobody // no instance is running
    };

    // Sends `request` to the running instance and waits up to five seconds for its answer. Blocks, so only
    // for a process that does nothing else.
    Answer send(const QString& request) const;

    // Asks the running instance for its status in the same way.
    Answer status(QString& status) const;

    // $XDG_RUNTIME_DIR/corvatto, else a directory of the user's own below the system's temporary one, also
    // when the path is too long for the name of a socket.
    static QString defaultDirectory();

private:
    void answer(QLocalSocket* socket);
    Answer exchange(const QString& request, QByteArray& text) const;
    bool isDirectoryOurs() const; // prints a line when it is not

    QString m_directory;
    QString m_socketPath;
    QLockFile m_lock;
    QLocalServer m_server;
    QString m_status;
    std::function<void(const QString& request)> m_handle;
};

} // namespace corvatto
