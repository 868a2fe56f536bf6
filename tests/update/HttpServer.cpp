#include "HttpServer.h"

#include <QHostAddress>
#include <QNetworkProxy>
#include <QTimer>

namespace corvatto::test {

HttpServer::HttpServer(quint16 port, std::unique_ptr<QTcpServer> server) : m_server(std::move(server)) {
    m_server->setProxy(QNetworkProxy(QNetworkProxy::NoProxy));
    connect(m_server.get(), &QTcpServer::pendingConnectionAvailable, this, &HttpServer::accept);
    m_server->listen(QHostAddress::LocalHost, port);
}

QUrl HttpServer::url(const QString& path, const QString& scheme) const {
    return QUrl(QStringLiteral("%1://127.0.0.1:%2%3").arg(scheme).arg(m_server->serverPort()).arg(path));
}

void HttpServer::accept() {
    QTcpSocket* socket = m_server->nextPendingConnection();
    const auto read = [this, socket, request = QByteArray()]() mutable {
        request += socket->readAll();
        if (!request.endsWith("\r\n\r\n")) {
            return;
        }
        requests << std::exchange(request, {});
        const QString path = QString::fromLatin1(requests.last().split(' ').value(1));
        answers.value(path, respond("<html>no such page</html>", "404 Not Found"))(*socket);
    };
    connect(socket, &QTcpSocket::readyRead, this, read);
    connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
}

HttpServer::Answer HttpServer::raw(const QByteArray& bytes) {
    return [bytes](QTcpSocket& socket) {
        socket.write(bytes);
        socket.disconnectFromHost();
    };
}

HttpServer::Answer HttpServer::respond(const QByteArray& body, const QByteArray& status,
                                       const QByteArray& moreHeaders) {
    return raw("HTTP/1.1 " + status + "\r\nConnection: close\r\nContent-Length: " +
               QByteArray::number(body.size()) + "\r\n" + moreHeaders + "\r\n" + body);
}

HttpServer::Answer HttpServer::redirect(const QUrl& target) {
    return respond("moved", "302 Found", "Location: " + target.toEncoded() + "\r\n");
}

HttpServer::Answer HttpServer::pieces(const QList<QByteArray>& parts, std::chrono::milliseconds pause) {
    return [parts, pause](QTcpSocket& socket) {
        auto* timer = new QTimer(&socket);
        connect(timer, &QTimer::timeout, &socket, [&socket, timer, left = parts]() mutable {
            socket.write(left.takeFirst());
            if (left.isEmpty()) {
                timer->stop();
            }
        });
        timer->start(pause);
    };
}

} // namespace corvatto::test
