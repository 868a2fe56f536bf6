#include "update/Download.h"

#include "HttpServer.h"
#include "support/Eventually.h"
#include "support/Printing.h"

#include <QCoroTask>
#include <QElapsedTimer>
#include <QFile>
#include <QNetworkProxy>
#include <QProcess>
#include <QSslCertificate>
#include <QSslConfiguration>
#include <QSslKey>
#include <QSslServer>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <fcntl.h>
#include <net/if.h>
#include <sched.h>
#include <sys/ioctl.h>
#include <unistd.h>

using namespace std::chrono_literals;

namespace corvatto {
namespace {

struct Outcome {
    QByteArray body;
    int status = 0;
    int code = 0; // the error's, 0 for none
    std::chrono::milliseconds elapsed{};
};

QCoro::Task<Outcome> fetch(QUrl url, Download::Limits limits) {
    Download download(url, limits);
    try {
        const Download::Response response = co_await download.response();
        co_return Outcome{response.body, response.status, 0, {}};
    } catch (const FetchError& error) {
        EXPECT_EQ(error.domain, u"NSURLErrorDomain");
        EXPECT_FALSE(error.description.isEmpty());
        co_return Outcome{{}, 0, error.code, {}};
    }
}

Outcome outcomeOf(const QUrl& url, const Download::Limits& limits = {}) {
    QElapsedTimer timer;
    timer.start();
    auto task = fetch(url, limits);
    EXPECT_TRUE(test::eventually([&] { return task.isReady(); })) << url.toString().toStdString();
    Outcome outcome;
    task.then([&](const Outcome& result) { outcome = result; });
    outcome.elapsed = std::chrono::milliseconds(timer.elapsed());
    return outcome;
}

class DownloadTest : public ::testing::Test {
protected:
    test::HttpServer server;

    Outcome outcomeOfAnswer(const test::HttpServer::Answer& answer, const Download::Limits& limits = {}) {
        server.answers[QStringLiteral("/")] = answer;
        return outcomeOf(server.url(QStringLiteral("/")), limits);
    }
};

TEST_F(DownloadTest, GivesWhateverTheServerAnswers) {
    for (const QByteArray status : {"200 OK", "201 Created", "304 Not Modified", "400 Bad Request", "401 No",
                                    "404 Not Found", "500 Broken", "503 Busy"}) {
        const Outcome outcome = outcomeOfAnswer(test::HttpServer::respond("{}", status));
        EXPECT_EQ(outcome.status, status.left(3).toInt());
        EXPECT_EQ(outcome.code, 0) << status.constData();
    }
    EXPECT_EQ(outcomeOfAnswer(test::HttpServer::respond("some text")).body, "some text");
    const QByteArray largest(Download::Limits().bytes, 'x');
    EXPECT_EQ(outcomeOfAnswer(test::HttpServer::respond(largest)).body, largest);
}

TEST_F(DownloadTest, TellsWhyItFailed) {
    using Server = test::HttpServer;
    struct Case {
        const char* name;
        Server::Answer answer;
        int code;
    };
    for (const Case& c : std::initializer_list<Case>{
             {"closed without a word", Server::raw({}), -1005},
             {"cut off in the headers", Server::raw("HTTP/1.1 200 OK\r\nContent-Le"), -1005},
             {"cut off in the body", Server::raw("HTTP/1.1 200 OK\r\nContent-Length: 20\r\n\r\n{"), -1005},
             {"a byte too many", Server::respond(QByteArray(Download::Limits().bytes + 1, 'x')), -1103},
             {"a circle", Server::redirect(server.url(QStringLiteral("/"))), -1007},
             {"to another machine, unprotected", Server::redirect(QUrl(QStringLiteral("http://192.0.2.1/"))),
              -1022},
             {"to a file", Server::redirect(QUrl(QStringLiteral("file:///etc/hostname"))), -1022}}) {
        const Outcome outcome = outcomeOfAnswer(c.answer);
        EXPECT_EQ(outcome.code, c.code) << c.name << ", status " << outcome.status;
        EXPECT_EQ(outcome.body, "") << c.name;
    }
    for (const char* address : {"http://192.0.2.1/update.json", "http://localhost/", "ftp://127.0.0.1/",
                                "file:///etc/hostname", "https:///update.json", "update.json", ""}) {
        EXPECT_EQ(outcomeOf(QUrl(QString::fromLatin1(address))).code, -1022) << address;
    }
    EXPECT_NE(outcomeOfAnswer(Server::raw("220 mail.example ready\r\n\r\n")).code, 0) << "no HTTP";
    const QUrl nobody = test::HttpServer().url(QStringLiteral("/")); // which is gone
    EXPECT_EQ(outcomeOf(nobody).code, -1004);
}

TEST_F(DownloadTest, GivesUpABodyThatIsTooLongWhileItArrives) {
    qint64 sent = 0;
    const auto pour = [&sent](QTcpSocket& socket) {
        socket.write("HTTP/1.1 200 OK\r\nContent-Length: 52428800\r\n\r\n");
        QObject::connect(&socket, &QTcpSocket::bytesWritten, &socket, [&sent, &socket](qint64 bytes) {
            sent += bytes;
            if (socket.bytesToWrite() == 0 && sent < 52'428'800) {
                socket.write(QByteArray(65'536, 'x'));
            }
        });
    };
    EXPECT_EQ(outcomeOfAnswer(pour).code, -1103);
    EXPECT_LT(sent, 20'000'000) << "what the sockets hold at most, and not all of it";
}

TEST_F(DownloadTest, RunsOutOfTime) {
    using Server = test::HttpServer;
    const QByteArray headers = "HTTP/1.1 200 OK\r\nContent-Length: 9\r\n\r\n";
    const Download::Limits impatient{.request = 100ms};
    EXPECT_EQ(outcomeOfAnswer([](QTcpSocket&) {}, impatient).code, -1001) << "no answer";
    EXPECT_EQ(outcomeOfAnswer([&](QTcpSocket& socket) { socket.write(headers); }, impatient).code, -1001)
        << "silent after the headers";

    // Nine pieces that come often enough, but take longer than silence may.
    QList<QByteArray> drops{headers};
    drops.resize(10, QByteArray("x"));
    const Outcome slow = outcomeOfAnswer(Server::pieces(drops, 100ms), {.request = 800ms});
    EXPECT_EQ(slow.body, "xxxxxxxxx");
    EXPECT_GE(slow.elapsed, 820ms);

    const Outcome late = outcomeOfAnswer(Server::pieces(drops, 100ms), {.resource = 300ms});
    EXPECT_EQ(late.code, -1001);
    EXPECT_GE(late.elapsed, 250ms); // timers are a little coarse
}

TEST_F(DownloadTest, KeepsNothing) {
    server.answers[QStringLiteral("/there")] = test::HttpServer::respond("here", "200 OK", "ETag: \"1\"\r\n");
    const auto answer = test::HttpServer::respond(
        "moved", "302 Found",
        "Location: /there\r\nSet-Cookie: id=1; Max-Age=9999\r\nCache-Control: max-age=9999\r\n");
    EXPECT_EQ(outcomeOfAnswer(answer).body, "here");
    EXPECT_EQ(outcomeOfAnswer(answer).body, "here");
    ASSERT_EQ(server.requests.size(), 4) << "asked afresh each time";
    for (const QByteArray& request : server.requests) {
        EXPECT_TRUE(request.startsWith("GET ")) << request.constData();
        EXPECT_FALSE(request.contains("Cookie")) << request.constData();
        EXPECT_FALSE(request.contains("If-")) << request.constData();
    }
}

// Waiting for the network. A group address is one to which no system opens a connection: it is unreachable,
// as everything is on a machine without a network.
TEST_F(DownloadTest, WaitsForTheNetworkOnlyAsLongAsAllMayTake) {
    const QUrl proxy = server.url(QStringLiteral("/")); // which is not asked for its help
    QNetworkProxy::setApplicationProxy(
        QNetworkProxy(QNetworkProxy::HttpProxy, proxy.host(), static_cast<quint16>(proxy.port())));
    const Outcome outcome =
        outcomeOf(QUrl(QStringLiteral("https://224.0.0.1/")), {.resource = 300ms, .firstRetry = 50ms});
    QNetworkProxy::setApplicationProxy(QNetworkProxy(QNetworkProxy::NoProxy));
    EXPECT_TRUE(server.requests.isEmpty());
    EXPECT_EQ(outcome.code, -1009);
    EXPECT_GE(outcome.elapsed, 250ms);
}

// A network of our own that is down at first. Needs the right to make one.
TEST_F(DownloadTest, GoesOnWhenTheNetworkComesUp) {
    const int original = open("/proc/thread-self/ns/net", O_RDONLY | O_CLOEXEC);
    if (original < 0 || unshare(CLONE_NEWNET) != 0) {
        GTEST_SKIP() << "no right to make a network namespace";
    }
    constexpr quint16 port = 8080; // nobody else is here
    std::unique_ptr<test::HttpServer> there;
    QTimer::singleShot(250ms, [&there, port] {
        const int control = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
        ifreq loopback{};
        qstrncpy(loopback.ifr_name, "lo", IFNAMSIZ);
        loopback.ifr_flags = IFF_UP;
        EXPECT_EQ(ioctl(control, SIOCSIFFLAGS, &loopback), 0);
        close(control);
        there = std::make_unique<test::HttpServer>(port);
        EXPECT_TRUE(there->isListening());
        there->answers[QStringLiteral("/")] = test::HttpServer::respond("at last");
    });
    const Outcome outcome = outcomeOf(QUrl(QStringLiteral("http://127.0.0.1:8080/")), {.firstRetry = 100ms});
    EXPECT_EQ(outcome.body, "at last") << outcome.code;
    EXPECT_EQ(setns(original, CLONE_NEWNET), 0);
    close(original);
}

// A certificate for 127.0.0.1 that nobody vouches for, made for the occasion.
class SecureDownloadTest : public DownloadTest {
protected:
    QTemporaryDir directory;
    QSslConfiguration original = QSslConfiguration::defaultConfiguration();
    QSslConfiguration identity = original;
    std::unique_ptr<test::HttpServer> secureServer;

    void SetUp() override {
        const QString key = directory.filePath(QStringLiteral("key.pem"));
        const QString certificate = directory.filePath(QStringLiteral("certificate.pem"));
        QProcess openssl;
        openssl.start(
            QStringLiteral("openssl"),
            QStringLiteral("req -x509 -newkey ec -pkeyopt ec_paramgen_curve:P-256 -nodes -days 2 "
                           "-subj /CN=corvatto-test -addext subjectAltName=IP:127.0.0.1 -keyout %1 -out %2")
                .arg(key, certificate)
                .split(u' '));
        ASSERT_TRUE(openssl.waitForFinished());
        ASSERT_EQ(openssl.exitCode(), 0) << openssl.readAllStandardError().constData();
        QFile keyFile(key);
        ASSERT_TRUE(keyFile.open(QIODevice::ReadOnly));
        identity.setPrivateKey(QSslKey(&keyFile, QSsl::Ec));
        identity.setLocalCertificate(QSslCertificate::fromPath(certificate).value(0));
        auto tls = std::make_unique<QSslServer>();
        tls->setSslConfiguration(identity);
        secureServer = std::make_unique<test::HttpServer>(0, std::move(tls));
        secureServer->answers[QStringLiteral("/")] = test::HttpServer::respond("secret");
    }
    void TearDown() override { QSslConfiguration::setDefaultConfiguration(original); }

    QUrl secureUrl() const { return secureServer->url(QStringLiteral("/"), QStringLiteral("https")); }
    void trust() const {
        QSslConfiguration trusting = original;
        trusting.addCaCertificate(identity.localCertificate());
        QSslConfiguration::setDefaultConfiguration(trusting);
    }
};

TEST_F(SecureDownloadTest, AcceptsOnlyAValidCertificate) {
    EXPECT_EQ(outcomeOf(secureUrl()).code, -1200) << "nobody vouches for it";
    trust();
    EXPECT_EQ(outcomeOf(secureUrl()).body, "secret");
    QUrl otherName = secureUrl();
    otherName.setHost(QStringLiteral("localhost"));
    EXPECT_EQ(outcomeOf(otherName).code, -1200) << "another's certificate";
    EXPECT_EQ(secureServer->requests.size(), 1) << "nothing was asked of those";
}

TEST_F(SecureDownloadTest, NeverLeavesProtection) {
    trust();
    server.answers[QStringLiteral("/")] = test::HttpServer::redirect(secureUrl());
    EXPECT_EQ(outcomeOf(server.url(QStringLiteral("/"))).body, "secret") << "to more";
    secureServer->answers[QStringLiteral("/")] =
        test::HttpServer::redirect(server.url(QStringLiteral("/plain")));
    server.answers[QStringLiteral("/plain")] = test::HttpServer::respond("read by all");
    EXPECT_EQ(outcomeOf(secureUrl()).code, -1022) << "to less";
    EXPECT_EQ(outcomeOf(server.url(QStringLiteral("/"))).code, -1022) << "to more, then to less";
}

} // namespace
} // namespace corvatto
