#include "update/Download.h"

#include "HttpServer.h"
#include "support/Eventually.h"
#include "support/Printing.h"

#include <QCoroTask>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QSslCertificate>
#include <QSslConfiguration>
#include <QSslKey>
#include <QSslServer>
#include <QTemporaryDir>
#include <QTimer>

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

TEST_F(DownloadTest, GivesWhateverTheServerAnswersOrTellsWhyItFailed) {
    for (const QByteArray status : {"200 OK", "304 Not Modified", "401 No", "503 Busy"}) {
        const Outcome outcome = outcomeOfAnswer(test::HttpServer::respond("{}", status));
        EXPECT_EQ(outcome.status, status.left(3).toInt());
        EXPECT_EQ(outcome.code, 0) << status.constData();
    }
    const QByteArray largest(Download::Limits().bytes, 'x');
    EXPECT_EQ(outcomeOfAnswer(test::HttpServer::respond(largest)).body, largest);

    using Server = test::HttpServer;
    for (const auto& [answer, code] : std::initializer_list<std::pair<Server::Answer, int>>{
             {Server::raw({}), -1005},
             {Server::raw("HTTP/1.1 200 OK\r\nContent-Length: 20\r\n\r\n{"), -1005},
             {Server::respond(largest + 'x'), -1103},
             {Server::redirect(server.url(QStringLiteral("/"))), -1007},
             {Server::redirect(QUrl(QStringLiteral("http://192.0.2.1/"))), -1022},
             {Server::redirect(QUrl(QStringLiteral("file:///etc/hostname"))), -1022}}) {
        const Outcome outcome = outcomeOfAnswer(answer);
        EXPECT_EQ(outcome.code, code) << "status " << outcome.status;
        EXPECT_EQ(outcome.body, "");
    }
    EXPECT_NE(outcomeOfAnswer(Server::raw("220 mail.example ready\r\n\r\n")).code, 0) << "no HTTP";
    for (const char* address : {"http://192.0.2.1/update.json", "http://localhost/", "ftp://127.0.0.1/",
                                "file:///etc/hostname", "https:///update.json", ""}) {
        EXPECT_EQ(outcomeOf(QUrl(QString::fromLatin1(address))).code, -1022) << address;
    }
    const QUrl nobody = Server().url(QStringLiteral("/")); // which is gone
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
    const QByteArray headers = "HTTP/1.1 200 OK\r\nContent-Length: 9\r\n\r\n";
    const auto silent = [&](QTcpSocket& socket) {
        socket.write(headers);
    };
    EXPECT_EQ(outcomeOfAnswer(silent, {.request = 100ms}).code, -1001);

    // Pieces that come often enough, but take longer than silence may.
    const auto dropping = [&](QTcpSocket& socket) {
        socket.write(headers);
        auto* timer = new QTimer(&socket);
        QObject::connect(timer, &QTimer::timeout, &socket, [&socket] { socket.write("x"); });
        timer->start(100ms);
    };
    const Outcome slow = outcomeOfAnswer(dropping, {.request = 800ms});
    EXPECT_EQ(slow.body, "xxxxxxxxx");
    EXPECT_GE(slow.elapsed, 820ms);
    const Outcome late = outcomeOfAnswer(dropping, {.resource = 300ms});
    EXPECT_EQ(late.code, -1001);
    EXPECT_GE(late.elapsed, 250ms); // timers are a little coarse
}

TEST_F(DownloadTest, SendsNothingAboutTheUser) {
    const QUrl there = server.url(QStringLiteral("/there"));
    server.answers[there.path()] = test::HttpServer::respond("here");
    EXPECT_EQ(outcomeOfAnswer(test::HttpServer::redirect(there, "Set-Cookie: id=1; Max-Age=9999\r\n")).body,
              "here");
    QList<QByteArray> lines = server.requests.last().split('\n');
    std::sort(lines.begin(), lines.end());
    EXPECT_EQ(lines.join(), "\rAccept-Encoding: identity\rAccept-Language: *\rAccept: application/json\r"
                            "Cache-Control: no-cache\rConnection: close\rGET /there HTTP/1.1\rHost: " +
                                there.authority().toLatin1() + "\rPragma: no-cache\rUser-Agent: Corvatto\r")
        << lines.join('\n').constData();
}

// A group address is one to which no system opens a connection: it is unreachable, as everything is on a
// machine without a network. A network of our own, which is down at first, needs the right to make one.
TEST_F(DownloadTest, WaitsForTheNetworkAsLongAsAllMayTake) {
    const Outcome unreachable =
        outcomeOf(QUrl(QStringLiteral("https://224.0.0.1/")), {.resource = 300ms, .firstRetry = 50ms});
    EXPECT_EQ(unreachable.code, -1009);
    EXPECT_GE(unreachable.elapsed, 250ms);

    const int original = open("/proc/thread-self/ns/net", O_RDONLY | O_CLOEXEC);
    if (original < 0 || unshare(CLONE_NEWNET) != 0) {
        GTEST_SKIP() << "no right to make a network namespace";
    }
    std::unique_ptr<test::HttpServer> there;
    QTimer::singleShot(250ms, [&there] {
        const int control = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
        ifreq loopback{{"lo"}, {}};
        loopback.ifr_flags = IFF_UP;
        EXPECT_EQ(ioctl(control, SIOCSIFFLAGS, &loopback), 0);
        close(control);
        there = std::make_unique<test::HttpServer>(8080); // nobody else is here
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
        const QString both = directory.filePath(QStringLiteral("both.pem"));
        QProcess openssl;
        openssl.start(
            QStringLiteral("openssl"),
            QStringLiteral("req -x509 -newkey ec -pkeyopt ec_paramgen_curve:P-256 -nodes -days 2 "
                           "-subj /CN=corvatto-test -addext subjectAltName=IP:127.0.0.1 -keyout %1 -out %1")
                .arg(both)
                .split(u' '));
        ASSERT_TRUE(openssl.waitForFinished());
        QFile file(both);
        ASSERT_TRUE(file.open(QIODevice::ReadOnly));
        identity.setPrivateKey(QSslKey(&file, QSsl::Ec));
        identity.setLocalCertificate(QSslCertificate::fromPath(both).value(0));
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
    otherName.setHost(QStringLiteral("127.0.0.2")); // leads to the same server
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
