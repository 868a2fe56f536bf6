// The socket in the file system that requests arrive at. Only processes of this user are heard.
#pragma once

#include "app/RequestConnection.h"
#include "base/FileDescriptor.h"

#include <QObject>
#include <QSocketNotifier>

#include <memory>
#include <string>
#include <system_error>

namespace corvatto {

// Main thread.
class RequestSocket : public QObject {
    Q_OBJECT

public:
    explicit RequestSocket(RequestConnection::Arrived arrived) : m_arrived(std::move(arrived)) {}
    // Removes the socket.
    ~RequestSocket() override;

    // Replaces what is at `path`. To be called once.
    std::error_code listen(const std::string& path);

private:
    void accept();
    void rest();

    RequestConnection::Arrived m_arrived;
    std::string m_path; // empty unless it listens
    FileDescriptor m_socket;
    std::unique_ptr<QSocketNotifier> m_notifier;
};

} // namespace corvatto
