// A server on a loopback address that says exactly what the test wants, broken answers included.
#pragma once

#include <QByteArray>
#include <QMap>
#include <QObject>
#include <QTcpServer>
#include <QTcpSocket>
#include <QUrl>

#include <chrono>
#include <functional>
#include <memory>

namespace corvatto::test {

class HttpServer : public QObject {
public:
    // Called with the connection once a request's headers are complete.
    using Answer = std::function<void(QTcpSocket&)>;

    // Any free port, unless one is given. A QSslServer speaks HTTPS.
    explicit HttpServer(quint16 port = 0,
                        std::unique_ptr<QTcpServer> server = std::make_unique<QTcpServer>());

    QMap<QString, Answer> answers; // by path; 404 for others
    QList<QByteArray> requests;    // so far, their headers

    bool isListening() const { return m_server->isListening(); }
    QUrl url(const QString& path, const QString& scheme = QStringLiteral("http")) const;

    // Answers of a whole response; the connection is closed after it.
    static Answer respond(const QByteArray& body, const QByteArray& status = "200 OK",
                          const QByteArray& moreHeaders = {});
    static Answer redirect(const QUrl& target);
    // These bytes and nothing else, then the end.
    static Answer raw(const QByteArray& bytes);
    // The pieces one after the other with a pause before each; the connection stays open.
    static Answer pieces(const QList<QByteArray>& parts, std::chrono::milliseconds pause);

private:
    void accept();

    std::unique_ptr<QTcpServer> m_server;
};

} // namespace corvatto::test
