#include "update/UpdateChecker.h"

#include "support/CapturedOutput.h"
#include "support/Children.h"
#include "support/Eventually.h"
#include "support/FakeDesktop.h"
#include "support/FakeUserDefaults.h"
#include "support/HttpServer.h"
#include "support/Printing.h"
#include "update/VersionComparison.h"

#include <QDateTime>
#include <QRegularExpression>

#include <gtest/gtest.h>

namespace corvatto {
namespace {

QByteArray document(const QByteArray& version, const QByteArray& downloadURL = "https://example.org/") {
    return R"({"latest_version":")" + version + R"(","update_log":"更快\n更稳","download_url":")" +
           downloadURL + "\"}";
}

class UpdateCheckerTest : public ::testing::Test {
protected:
    test::HttpServer server;
    test::FakeUserDefaults defaults;
    test::FakeDesktop desktop;
    std::optional<UpdateChecker> checker;
    QByteArray printed;

    UpdateCheckerTest() { makeChecker(u"1.2"_qs); }
    void makeChecker(const QString& localVersion) {
        checker.emplace(UpdateChecker::Services{defaults, desktop, desktop},
                        FetchHelper{u"" FETCH_HELPER ""_qs}, server.url(), localVersion);
    }
    // Runs one check against `answer`; returns the alerts that it showed.
    QList<Alert> check(bool manual, const test::HttpServer::Answer& answer) {
        server.answers["/"] = answer;
        desktop.shown.clear();
        test::CapturedOutput output;
        const auto task = checker->checkForUpdates(manual);
        EXPECT_TRUE(test::eventually([&] { return task.isReady(); }));
        printed = output.text();
        return desktop.shown;
    }
    QList<Alert> check(bool manual, const QByteArray& body) {
        return check(manual, test::HttpServer::respond(body));
    }
};

TEST(Versions, AreComparedNumberByNumber) {
    // What is no number counts as 0; one sign belongs to a number, which has 64 bits.
    for (const char* row : {"1.10 > 1.9", "1.2.1 > 1.2", "2 > 1.9.9", "+2 > 1", "1 > 1.-1",
                            "9223372036854775807 > 9223372036854775806", "1.2 = 1.2.0", "1.3-beta < 1.2",
                            " = 0", "1.\u0662 = 1.0", "1.--2 < 1.1", "9223372036854775808 < 1"}) {
        const QStringList words = QString::fromUtf8(row).split(u' ');
        EXPECT_EQ(isRemoteVersion(words[0], words[2]), words[1] == u">") << row;
        EXPECT_EQ(isRemoteVersion(words[2], words[0]), words[1] == u"<") << row;
    }
}

TEST(UpdateDocument, NeedsItsThreeTexts) {
    EXPECT_TRUE(UpdateInfo::decode(R"({"update_log":"","x":[1],"download_url":"","latest_version":""})"));
    for (const char* bad : {R"({"latest_version":1.4,"update_log":"","download_url":""})",
                            R"({"latest_version":"","update_log":null,"download_url":""})",
                            R"({"latest_version":"","update_log":""})",
                            R"({"latest_version":"","update_log":"","download_url":""} x)"}) {
        EXPECT_FALSE(UpdateInfo::decode(bad)) << bad;
    }
}

TEST_F(UpdateCheckerTest, AnnouncesANewerVersionAndRemembersTheCheck) {
    desktop.answer = 1; // remind me later
    const double before = static_cast<double>(QDateTime::currentMSecsSinceEpoch()) / 1000;
    const Alert shown = check(false, document("1.4.0")).at(0);
    EXPECT_EQ(shown.messageText, u"发现新版本");
    EXPECT_EQ(shown.informativeText, u"当前版本：1.2\n最新版本：1.4.0\n\n更新内容：\n更快\n更稳");
    EXPECT_EQ(shown.buttons, QStringList({u"下载更新"_qs, u"稍后提醒"_qs, u"跳过此版本"_qs}));
    EXPECT_EQ(shown.buttonOnClosing, 1) << "closing skips nothing";
    EXPECT_EQ(printed, "");
    EXPECT_TRUE(desktop.opened.isEmpty());
    ASSERT_EQ(defaults.stored.size(), 1) << "nothing is skipped";
    EXPECT_NEAR(defaults.stored[SettingsKeys::corvattoLastUpdateCheckAt].toDouble(), before, 10);

    makeChecker({});
    EXPECT_EQ(check(true, document("0.0.1")).at(0).informativeText.split(u'\n').first(), u"当前版本：0.0.0");
}

TEST_F(UpdateCheckerTest, SaysThatAllIsCurrentOnlyWhenAsked) {
    EXPECT_TRUE(check(false, document("1.2.0")).empty());
    EXPECT_EQ(defaults.stored.size(), 1) << "remembered as well";
    const Alert shown = check(true, document("1.2.0")).at(0);
    EXPECT_EQ(shown.messageText, u"已是最新版本");
    EXPECT_EQ(shown.informativeText, u"当前版本 1.2 已是最新。");
    EXPECT_EQ(shown.buttons, QStringList(u"确定"_qs));
}

TEST_F(UpdateCheckerTest, ASkippedVersionIsNotAnnouncedUnlessAsked) {
    desktop.answer = 2;
    EXPECT_EQ(check(false, document("1.4.0")).size(), 1);
    EXPECT_EQ(check(false, document("1.4.0")).size(), 0);
    EXPECT_EQ(check(true, document("1.4.0")).size(), 1);
    EXPECT_EQ(check(false, document("1.4")).size(), 1) << "the same number, but not the same text";
}

TEST_F(UpdateCheckerTest, OpensOnlyTheWeb) {
    for (const QByteArray address :
         {"", "https://", "https://exa mple.org", "file:///usr/bin/true", "/usr/bin/true",
          "https://example.org/get?v=1#top", "HTTP://例子.中国/下载"}) {
        EXPECT_EQ(check(true, document("9", address)).size(), 1) << address.constData();
    }
    EXPECT_EQ(desktop.opened,
              QList({QUrl(u"https://example.org/get?v=1#top"_qs), QUrl(u"http://例子.中国/下载"_qs)}));
}

TEST_F(UpdateCheckerTest, FailuresArePrintedAndToldWhenAsked) {
    using Server = test::HttpServer;
    for (const auto& [answer, error] : std::initializer_list<std::pair<Server::Answer, QByteArray>>{
             {Server::respond(document("9"), "201 Created\r\n"), "NSURLErrorDomain, code: -1011"},
             {Server::raw({}), "NSURLErrorDomain, code: -1005"},
             {Server::respond("{}"), "NSCocoaErrorDomain, code: 4864"}}) {
        const Alert shown = check(true, answer).at(0);
        EXPECT_EQ(shown.messageText, u"检查更新失败");
        const QString& text = shown.informativeText;
        EXPECT_FALSE(text.isEmpty() || text.contains(QRegularExpression(u"[a-z]"_qs))) << "in one language";
        EXPECT_EQ(printed, "[UpdateChecker] ERROR (manual=true):\n  domain: " + error + "\n  description: " +
                               text.toUtf8() + "\n  URL: " + server.url().toEncoded() + "\n");
        EXPECT_TRUE(check(false, answer).empty());
        EXPECT_EQ(printed.count('\n'), 4);
    }
    EXPECT_TRUE(defaults.stored.isEmpty());
}

TEST_F(UpdateCheckerTest, MayCheckAgainAndBeDestroyedWhileItsAlertIsOpen) {
    desktop.whileShown = [this] {
        const auto inner = checker->checkForUpdates(true);
        EXPECT_TRUE(test::eventually([&] { return inner.isReady(); }));
    };
    EXPECT_EQ(check(true, document("1.4.0")).size(), 2);
    desktop.opened.clear();
    for (const int answer : {0, 2}) {
        desktop.answer = answer;
        desktop.whileShown = [this] {
            checker.reset();
        };
        check(true, document("1.4.0"));
        makeChecker(u"1.2"_qs);
    }
    EXPECT_TRUE(desktop.opened.isEmpty());
    EXPECT_EQ(defaults.stored.size(), 1) << "nothing is skipped";
}

TEST_F(UpdateCheckerTest, MayBeDestroyedWhileItLoads) {
    server.answers["/"] = [](QTcpSocket&) {
    };
    for (const bool isStarting : {false, true}) {
        const auto check = checker->checkForUpdates(true);
        EXPECT_TRUE(test::eventually([&] { return isStarting || !server.requests.isEmpty(); }));
        checker.reset();
        EXPECT_TRUE(check.isReady()) << "without an event loop, as at the end of the program";
        EXPECT_TRUE(test::eventually(&test::allChildrenAreGone)) << "no helper is left";
        makeChecker(u"1.2"_qs);
    }
    EXPECT_TRUE(desktop.shown.empty());
}

} // namespace
} // namespace corvatto
