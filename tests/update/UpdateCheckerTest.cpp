#include "update/UpdateChecker.h"

#include "HttpServer.h"
#include "support/CapturedOutput.h"
#include "support/Eventually.h"
#include "support/FakeAlerts.h"
#include "support/FakeUserDefaults.h"
#include "support/FakeWorkspace.h"
#include "support/Printing.h"

#include <QDateTime>

#include <gmock/gmock.h>

namespace corvatto {
namespace {

const QString path = QStringLiteral("/update.json");

QByteArray document(const QByteArray& version,
                    const QByteArray& downloadURL = "https://example.org/get?v=1#top") {
    return R"({"latest_version":")" + version + R"(","update_log":"更快\n更稳","download_url":")" +
           downloadURL + "\"}";
}

class UpdateCheckerTest : public ::testing::Test {
protected:
    test::HttpServer server;
    test::FakeUserDefaults defaults;
    test::FakeAlerts alerts;
    test::FakeWorkspace workspace;
    std::optional<UpdateChecker> checker;
    QByteArray printed;

    void SetUp() override { makeChecker(QStringLiteral("1.2")); }
    void makeChecker(const QString& localVersion) {
        checker.emplace(UpdateChecker::Desktop{defaults, alerts, workspace}, server.url(path), localVersion);
    }
    // Runs one check against `answer`; returns the alerts that it showed.
    std::vector<Alert> check(bool manual, const test::HttpServer::Answer& answer) {
        server.answers[path] = answer;
        alerts.shown.clear();
        test::CapturedOutput output;
        const auto task = checker->checkForUpdates(manual);
        EXPECT_TRUE(test::eventually([&] { return task.isReady(); }));
        printed = output.text();
        return alerts.shown;
    }
    std::vector<Alert> check(bool manual, const QByteArray& body) {
        return check(manual, test::HttpServer::respond(body));
    }
    QVariant lastCheck() const { return defaults.stored.value(SettingsKeys::corvattoLastUpdateCheckAt); }
    QVariant ignored() const { return defaults.stored.value(SettingsKeys::corvattoIgnoredUpdateVersion); }
};

TEST_F(UpdateCheckerTest, AnnouncesANewerVersion) {
    alerts.answer = 1; // remind me later
    for (const bool manual : {false, true}) {
        const auto shown = check(manual, document("1.4.0"));
        ASSERT_EQ(shown.size(), 1U);
        EXPECT_EQ(shown[0].messageText, u"发现新版本");
        EXPECT_EQ(shown[0].informativeText, u"当前版本：1.2\n最新版本：1.4.0\n\n更新内容：\n更快\n更稳");
        EXPECT_EQ(shown[0].style, Alert::Style::Informational);
        EXPECT_EQ(shown[0].buttons, QStringList({u"下载更新"_qs, u"稍后提醒"_qs, u"跳过此版本"_qs}));
        EXPECT_EQ(shown[0].buttonOnClosing, 1) << "closing skips nothing";
        EXPECT_EQ(printed, "");
    }
    EXPECT_TRUE(workspace.opened.isEmpty());
    EXPECT_FALSE(ignored().isValid());

    makeChecker({});
    EXPECT_EQ(check(false, document("0.0.1")).at(0).informativeText.split(u'\n').first(), u"当前版本：0.0.0");
}

TEST_F(UpdateCheckerTest, SaysThatAllIsCurrentOnlyWhenAsked) {
    for (const QByteArray version : {"1.2", "1.1.9", "1.2.0", "1.2-beta", ""}) {
        EXPECT_TRUE(check(false, document(version)).empty()) << version.constData();
        const auto shown = check(true, document(version));
        ASSERT_EQ(shown.size(), 1U) << version.constData();
        EXPECT_EQ(shown[0].messageText, u"已是最新版本");
        EXPECT_EQ(shown[0].informativeText, u"当前版本 1.2 已是最新。");
        EXPECT_EQ(shown[0].style, Alert::Style::Informational);
        EXPECT_EQ(shown[0].buttons, QStringList(u"确定"_qs));
    }
}

TEST_F(UpdateCheckerTest, EverySuccessfulCheckIsRemembered) {
    for (const QByteArray version : {"1.4.0", "1.0"}) {
        const double before = static_cast<double>(QDateTime::currentMSecsSinceEpoch()) / 1000;
        check(false, document(version));
        EXPECT_EQ(lastCheck().typeId(), QMetaType::Double);
        EXPECT_GE(lastCheck().toDouble(), before);
        EXPECT_LE(lastCheck().toDouble(), static_cast<double>(QDateTime::currentMSecsSinceEpoch()) / 1000);
        defaults.stored.clear();
    }
}

TEST_F(UpdateCheckerTest, ASkippedVersionIsNotAnnouncedAgain) {
    alerts.answer = 2;
    EXPECT_EQ(check(false, document("1.4.0")).size(), 1U);
    EXPECT_EQ(ignored(), QVariant(u"1.4.0"_qs));
    EXPECT_EQ(check(false, document("1.4.0")).size(), 0U);
    EXPECT_EQ(check(false, document("1.4")).size(), 1U) << "the same number, but not the same text";
    alerts.answer = 1;
    EXPECT_EQ(check(false, document("1.4.1")).size(), 1U);
    defaults.stored[SettingsKeys::corvattoIgnoredUpdateVersion] = u"1.4.0"_qs;
    EXPECT_EQ(check(true, document("1.4.0")).at(0).messageText, u"发现新版本") << "when asked, anyway";
}

TEST_F(UpdateCheckerTest, OpensOnlyTheWeb) {
    struct Case {
        QByteArray address;
        bool isOpened;
    };
    for (const Case& c : std::initializer_list<Case>{{"https://example.org/get?v=1#top", true},
                                                     {"HTTP://example.org", true},
                                                     {"https://例子.中国/下载", true},
                                                     {"", false},
                                                     {"example.org", false},
                                                     {"https://", false},
                                                     {"https://exa mple.org", false},
                                                     {" https://example.org", false},
                                                     {"https://example.org/%zz", false},
                                                     {"file:///usr/bin/true", false},
                                                     {"/usr/bin/true", false},
                                                     {"javascript:alert(1)", false},
                                                     {"mailto:a@example.org", false},
                                                     {"ftp://example.org/", false}}) {
        workspace.opened.clear();
        EXPECT_EQ(check(true, document("9", c.address)).size(), 1U);
        EXPECT_EQ(workspace.opened.size(), c.isOpened ? 1 : 0) << c.address.constData();
    }
    check(true, document("9"));
    EXPECT_EQ(workspace.opened, QList{QUrl(u"https://example.org/get?v=1#top"_qs)});
}

TEST_F(UpdateCheckerTest, FailuresArePrintedAndToldWhenAsked) {
    using Server = test::HttpServer;
    struct Case {
        Server::Answer answer;
        const char* error;
    };
    for (const Case& c : std::initializer_list<Case>{
             {Server::respond(document("9"), "404 Not Found"), "domain: NSURLErrorDomain, code: -1011"},
             {Server::respond(document("9"), "201 Created"), "domain: NSURLErrorDomain, code: -1011"},
             {Server::raw({}), "domain: NSURLErrorDomain, code: -1005"},
             {Server::respond("{}"), "domain: NSCocoaErrorDomain, code: 4864"}}) {
        for (const bool manual : {false, true}) {
            const auto shown = check(manual, c.answer);
            const QList<QByteArray> lines = printed.split('\n');
            ASSERT_EQ(lines.size(), 5) << printed.constData();
            EXPECT_EQ(lines[0], manual ? "[UpdateChecker] ERROR (manual=true):"
                                       : "[UpdateChecker] ERROR (manual=false):");
            EXPECT_EQ(lines[1], QByteArray("  ") + c.error);
            EXPECT_THAT(lines[2].toStdString(), ::testing::MatchesRegex("  description: .+"));
            EXPECT_EQ(lines[3], "  URL: " + server.url(path).toEncoded());
            ASSERT_EQ(shown.size(), manual ? 1U : 0U);
            if (manual) {
                EXPECT_EQ(shown[0].messageText, u"检查更新失败");
                EXPECT_EQ(shown[0].informativeText.toUtf8(), lines[2].mid(qstrlen("  description: ")));
                EXPECT_EQ(shown[0].buttons, QStringList(u"确定"_qs));
            }
        }
    }
    EXPECT_TRUE(defaults.stored.isEmpty());
    EXPECT_TRUE(workspace.opened.isEmpty());
}

TEST_F(UpdateCheckerTest, ChecksMayOverlap) {
    // One more, begun and ended while the first one's alert is open.
    alerts.whileShown = [this] {
        const auto inner = checker->checkForUpdates(true);
        EXPECT_TRUE(test::eventually([&] { return inner.isReady(); }));
    };
    alerts.answer = 1;
    EXPECT_EQ(check(true, document("1.4.0")).size(), 2U);

    alerts.shown.clear();
    const auto first = checker->checkForUpdates(true);
    const auto second = checker->checkForUpdates(false);
    EXPECT_TRUE(test::eventually([&] { return first.isReady() && second.isReady(); }));
    EXPECT_EQ(alerts.shown.size(), 2U);
}

TEST_F(UpdateCheckerTest, MayBeDestroyedAtAnyTime) {
    const test::CapturedOutput output;
    server.answers[path] = test::HttpServer::pieces({"never sent"}, std::chrono::hours(1));
    const auto waiting = checker->checkForUpdates(true);
    ASSERT_TRUE(test::eventually([&] { return !server.requests.isEmpty(); }));
    checker.reset();
    EXPECT_TRUE(waiting.isReady()) << "without an event loop, as at the end of the program";
    makeChecker(QStringLiteral("1.2"));
    const auto starting = checker->checkForUpdates(true);
    checker.reset();
    EXPECT_TRUE(starting.isReady());
    EXPECT_TRUE(alerts.shown.empty());

    for (const int answer : {0, 2}) {
        alerts.answer = answer;
        alerts.whileShown = [this] {
            checker.reset();
        };
        makeChecker(QStringLiteral("1.2"));
        EXPECT_EQ(check(true, document("1.4.0")).size(), 1U);
    }
    EXPECT_TRUE(workspace.opened.isEmpty());
    EXPECT_FALSE(ignored().isValid());
}

TEST_F(UpdateCheckerTest, TheSharedOneIsTheOneInstalled) {
    UpdateChecker::install(*checker);
    EXPECT_EQ(&UpdateChecker::shared(), &*checker);
}

} // namespace
} // namespace corvatto
