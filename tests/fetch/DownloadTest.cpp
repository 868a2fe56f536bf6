#include "fetch/network/Download.h"

#include "support/Eventually.h"
#include "support/HttpServer.h"
#include "support/Printing.h"

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

using Server = test::HttpServer;

struct Outcome {
    QByteArray body;
    int status = 0;
    int code = 0; // the error's, 0 for none
};

Outcome outcomeOf(const QUrl& url, const FetchLimits& limits = {}) {
    std::optional<Outcome> outcome;
    const Download download(url, limits, [&outcome](const FetchOutcome& result) {
        const auto* response = std::get_if<FetchResponse>(&result);
        outcome = response != nullptr ? Outcome{response->body, response->status}
                                      : Outcome{{}, 0, std::get<FetchError>(result).code};
    });
    EXPECT_TRUE(test::eventually([&] { return outcome.has_value(); })) << url.toString().toStdString();
    return outcome.value_or(Outcome());
}

class DownloadTest : public ::testing::Test {
protected:
    Server server;

    Outcome outcomeOfAnswer(const Server::Answer& answer, const FetchLimits& limits = {}) {
        server.answers["/"] = answer;
        return outcomeOf(server.url(), limits);
    }
};

TEST_F(DownloadTest, GivesWhateverTheServerAnswersOrTellsWhyItFailed) {
    for (const QByteArray status : {"304 Not Modified\r\n", "401 No\r\n", "503 Busy\r\n"}) {
        EXPECT_EQ(outcomeOfAnswer(Server::respond("{}", status)).status, status.left(3).toInt());
    }
    const QByteArray largest(FetchLimits().bytes, 'x');
    EXPECT_EQ(outcomeOfAnswer(Server::respond(largest)).body, largest);

    for (const auto& [answer, code] : std::initializer_list<std::pair<Server::Answer, int>>{
             {Server::raw("HTTP/1.1 200 OK\r\nContent-Length: 20\r\n\r\n{"), -1005},
             {Server::redirect(server.url()), -1007},
             {Server::redirect(QUrl(QStringLiteral("http://192.0.2.1/"))), -1022}}) {
        EXPECT_EQ(outcomeOfAnswer(answer).code, code);
    }
    EXPECT_NE(outcomeOfAnswer(Server::raw("220 mail.example ready\r\n\r\n")).code, 0) << "no HTTP";
    for (const char* address : {"http://192.0.2.1/update.json", "http://localhost/", "ftp://127.0.0.1/",
                                "file:///etc/hostname", "https:///update.json"}) {
        EXPECT_EQ(outcomeOf(QUrl(QString::fromLatin1(address))).code, -1022) << address;
    }
    const QUrl nobody = Server().url(); // which is gone
    EXPECT_EQ(outcomeOf(nobody).code, -1004);
}

TEST_F(DownloadTest, GivesUpABodyThatIsTooLongWhileItArrives) {
    qint64 sent = 0;
    const auto pour = [&sent](QTcpSocket& socket) {
        QObject::connect(&socket, &QTcpSocket::bytesWritten, [&sent](qint64 bytes) { sent += bytes; });
        socket.write("HTTP/1.1 200 OK\r\nContent-Length: 52428800\r\n\r\n" + QByteArray(52'428'800, 'x'));
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
        timer->callOnTimeout([&socket] { socket.write("x"); });
        timer->start(100ms);
    };
    EXPECT_EQ(outcomeOfAnswer(dropping, {.request = 800ms}).body, "xxxxxxxxx");
    EXPECT_EQ(outcomeOfAnswer(dropping, {.resource = 300ms}).code, -1001);
}

TEST_F(DownloadTest, SendsNothingAboutTheUser) {
    const QUrl there = server.url("/there");
    server.answers["/there"] = Server::respond("here");
    EXPECT_EQ(outcomeOfAnswer(Server::redirect(there)).body, "here"); // which sets a cookie
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
    QElapsedTimer time;
    time.start();
    const QUrl unreachable(QStringLiteral("https://224.0.0.1/"));
    EXPECT_EQ(outcomeOf(unreachable, {.resource = 300ms, .firstRetry = 50ms}).code, -1009);
    EXPECT_GE(time.elapsed(), 250); // timers are a little coarse

    const int original = open("/proc/thread-self/ns/net", O_RDONLY | O_CLOEXEC);
    if (original < 0 || unshare(CLONE_NEWNET) != 0) {
        GTEST_SKIP() << "no right to make a network namespace";
    }
    std::unique_ptr<Server> there;
    QTimer::singleShot(250ms, [&there] {
        const int control = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
        ifreq loopback{{"lo"}, {}};
        loopback.ifr_flags = IFF_UP;
        EXPECT_EQ(ioctl(control, SIOCSIFFLAGS, &loopback), 0);
        close(control);
        there = std::make_unique<Server>(8080); // nobody else is here
        there->answers["/"] = Server::respond("at last");
    });
    const Outcome outcome = outcomeOf(QUrl(QStringLiteral("http://127.0.0.1:8080/")), {.firstRetry = 100ms});
    EXPECT_EQ(outcome.body, "at last") << outcome.code;
    EXPECT_EQ(setns(original, CLONE_NEWNET), 0);
    close(original);
}

// Beside the server, one with a certificate for 127.0.0.1 that nobody vouches for, made for the occasion.
class SecureDownloadTest : public DownloadTest {
protected:
    QSslConfiguration original = QSslConfiguration::defaultConfiguration();
    QSslCertificate certificate;
    std::unique_ptr<Server> secureServer;

    void SetUp() override {
        const QTemporaryDir directory;
        QFile file(directory.filePath(QStringLiteral("both.pem")));
        const QString command =
            QStringLiteral("req -x509 -newkey ec -pkeyopt ec_paramgen_curve:P-256 -nodes -days 2 "
                           "-subj /CN=corvatto-test -addext subjectAltName=IP:127.0.0.1 -keyout %1 -out %1");
        QProcess openssl;
        openssl.start(QStringLiteral("openssl"), command.arg(file.fileName()).split(u' '));
        ASSERT_TRUE(openssl.waitForFinished() && file.open(QIODevice::ReadOnly));
        certificate = QSslCertificate::fromPath(file.fileName()).value(0);
        QSslConfiguration identity = original;
        identity.setPrivateKey(QSslKey(&file, QSsl::Ec));
        identity.setLocalCertificate(certificate);
        auto tls = std::make_unique<QSslServer>();
        tls->setSslConfiguration(identity);
        secureServer = std::make_unique<Server>(0, std::move(tls));
        secureServer->answers["/"] = Server::respond("secret");
    }
    void TearDown() override { QSslConfiguration::setDefaultConfiguration(original); }

    QUrl secureUrl() const { return secureServer->url("/", "https"); }
    void trust() const {
        QSslConfiguration trusting = original;
        trusting.addCaCertificate(certificate);
        QSslConfiguration::setDefaultConfiguration(trusting);
    }
};

TEST_F(SecureDownloadTest, AcceptsOnlyAValidCertificate) {
    EXPECT_EQ(outcomeOf(secureUrl()).code, -1200) << "nobody vouches for it";
    trust();
    QUrl otherName = secureUrl();
    otherName.setHost(QStringLiteral("127.0.0.2")); // leads to the same server
    EXPECT_EQ(outcomeOf(otherName).code, -1200) << "another's certificate";
    EXPECT_TRUE(secureServer->requests.isEmpty());
}

TEST_F(SecureDownloadTest, NeverLeavesProtection) {
    trust();
    server.answers["/"] = Server::redirect(secureUrl());
    EXPECT_EQ(outcomeOf(server.url()).body, "secret") << "to more";
    secureServer->answers["/"] = Server::redirect(server.url("/plain"));
    server.answers["/plain"] = Server::respond("read by all");
    EXPECT_EQ(outcomeOf(secureUrl()).code, -1022) << "to less";
    EXPECT_EQ(outcomeOf(server.url()).code, -1022) << "to more, then to less";
}

} // namespace
} // namespace corvatto
