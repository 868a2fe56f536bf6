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

    QMap<QString, Answer> answers; // by path
    QList<QByteArray> requests;    // so far, their headers

    QUrl url(const QString& path, const QString& scheme = QStringLiteral("http")) const {
        return QUrl(QStringLiteral("%1://127.0.0.1:%2%3").arg(scheme).arg(m_server->serverPort()).arg(path));
    }

    // These bytes and nothing else, then the end.
    static Answer raw(const QByteArray& bytes) {
        return [bytes](QTcpSocket& socket) {
            socket.write(bytes);
            socket.disconnectFromHost();
        };
    }
    static Answer respond(const QByteArray& body, const QByteArray& status = "200 OK",
                          const QByteArray& moreHeaders = {}) {
        return raw("HTTP/1.1 " + status + "\r\nConnection: close\r\nContent-Length: " +
                   QByteArray::number(body.size()) + "\r\n" + moreHeaders + "\r\n" + body);
    }
    static Answer redirect(const QUrl& target, const QByteArray& moreHeaders = {}) {
        return respond("moved", "302 Found", "Location: " + target.toEncoded() + "\r\n" + moreHeaders);
    }

private:
    void accept() {
        QTcpSocket* socket = m_server->nextPendingConnection();
        connect(socket, &QTcpSocket::readyRead, this, [this, socket, request = QByteArray()]() mutable {
            request += socket->readAll();
            if (request.endsWith("\r\n\r\n")) {
                requests << std::exchange(request, {});
                answers.value(QString::fromLatin1(requests.last().split(' ').value(1)))(*socket);
            }
        });
        connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
    }

    std::unique_ptr<QTcpServer> m_server;
};

} // namespace corvatto::test
