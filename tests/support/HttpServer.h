// A server on a loopback address that says exactly what the test wants, broken answers included.
#pragma once

#include <QHostAddress>
#include <QMap>
#include <QNetworkProxy>
#include <QTcpServer>
#include <QTcpSocket>
#include <QUrl>

#include <functional>
#include <memory>

namespace corvatto::test {

class HttpServer : public QObject {
public:
    // Called with the connection once a request's headers are complete.
    using Answer = std::function<void(QTcpSocket&)>;

    // Any free port, unless one is given. A QSslServer speaks HTTPS.
    explicit HttpServer(quint16 port = 0, std::unique_ptr<QTcpServer> server = std::make_unique<QTcpServer>())
        : m_server(std::move(server)) {
        m_server->setProxy(QNetworkProxy(QNetworkProxy::NoProxy));
        connect(m_server.get(), &QTcpServer::pendingConnectionAvailable, this, &HttpServer::accept);
        m_server->listen(QHostAddress::AnyIPv4, port);
    }

    QMap<QByteArray, Answer> answers; // by path
    QList<QByteArray> requests;       // so far, their headers

    QUrl url(const char* path = "/", const char* scheme = "http") const {
        return QUrl(QString::asprintf("%s://127.0.0.1:%d%s", scheme, m_server->serverPort(), path));
    }

    // These bytes and nothing else, then the end.
    static Answer raw(const QByteArray& bytes) {
        return [bytes](QTcpSocket& socket) {
            socket.write(bytes);
            socket.disconnectFromHost();
        };
    }
    // Headers after the status, if any, end their lines.
    static Answer respond(const QByteArray& body, const QByteArray& statusAndHeaders = "200 OK\r\n") {
        return raw("HTTP/1.1 " + statusAndHeaders + "Content-Length: " + QByteArray::number(body.size()) +
                   "\r\n\r\n" + body);
    }
    static Answer redirect(const QUrl& target) {
        return respond("moved", "302 Found\r\nSet-Cookie: id=1; Max-Age=9999\r\nLocation: " +
                                    target.toEncoded() + "\r\n");
    }

private:
    void accept() {
        QTcpSocket* socket = m_server->nextPendingConnection();
        connect(socket, &QTcpSocket::readyRead, this, [this, socket, request = QByteArray()]() mutable {
            request += socket->readAll();
            if (request.endsWith("\r\n\r\n")) {
                requests << std::exchange(request, {});
                answers.value(requests.last().split(' ').value(1))(*socket);
            }
        });
        connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
    }

    std::unique_ptr<QTcpServer> m_server;
};

} // namespace corvatto::test
