// Helpers that are none, or fail.
#include "update/FetchProcess.h"

#include "support/Children.h"
#include "support/Eventually.h"
#include "support/Printing.h"

#include <QCoroTask>

#include <gtest/gtest.h>

using namespace std::chrono_literals;

namespace corvatto {
namespace {

QCoro::Task<QString> failure(QString helper, QString argument, FetchLimits limits) {
    FetchProcess process({helper}, QUrl(argument), limits);
    try {
        co_await process.response();
    } catch (const FetchError& error) {
        co_return error.description;
    }
    co_return {};
}

// Of a helper that does something else with its argument.
QString failureOf(const QString& helper, const QString& argument, const FetchLimits& limits = {}) {
    auto task = failure(helper, argument, limits);
    EXPECT_TRUE(test::eventually([&] { return task.isReady(); })) << helper.toStdString();
    QString description;
    task.then([&](const QString& result) { description = result; });
    return description;
}

TEST(FetchProcessTest, AHelperThatDoesNotDoItsWorkIsAFailureOfItsOwn) {
    EXPECT_EQ(failureOf(u"/nonexistent"_qs, {}), u"发生未知的网络错误：下载程序无法启动");
    for (const QString& helper : {u"true"_qs, u"echo"_qs, u"yes"_qs}) {
        EXPECT_EQ(failureOf(helper, u"nonsense"_qs), u"发生未知的网络错误：下载程序的结果无效");
    }
    EXPECT_EQ(failureOf(u"sleep"_qs, u"60"_qs, {.resource = 100ms - FetchProcess::grace}), u"连接超时。");
    EXPECT_TRUE(test::eventually(&test::allChildrenAreGone)) << "all have ended";
}

} // namespace
} // namespace corvatto
