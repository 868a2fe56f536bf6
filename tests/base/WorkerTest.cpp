#include "base/OrderedWork.h"

#include "support/Eventually.h"

#include <gtest/gtest.h>

namespace corvatto {
namespace {

TEST(Worker, LeavesQtsThreadsToQt) {
    QObject context;
    QThread* worker = nullptr;
    runOnWorker(
        context,
        [] {
            return std::pair(QThread::currentThread(), QThreadPool::globalInstance()->activeThreadCount());
        },
        [&](const std::pair<QThread*, int>& result) {
            worker = result.first;
            EXPECT_EQ(result.second, 0);
        });
    EXPECT_TRUE(test::eventually([&] { return worker != nullptr; }));
    EXPECT_NE(worker, QThread::currentThread());
}

TEST(OrderedWork, StepsTakeEffectInOrderHoweverTheyAreWaitedFor) {
    QStringList done;
    OrderedWork steps;
    const auto at = [&](const char* name) {
        return [&, name] {
            done << QString::fromUtf8(name);
        };
    };
    const auto beside = [&](const char* name, const std::function<void()>& after) {
        steps.add([&, name, after] {
            steps.goOnBeside([name] { return QString::fromUtf8(name); },
                             [&, after](const QString& result) {
                                 done << result;
                                 after();
                             });
        });
    };
    steps.add(at("1"));
    EXPECT_EQ(done, QStringList({QStringLiteral("1")})) << "at once";
    beside("2", [&] { steps.add(at("5")); });
    steps.add(at("3"));
    beside("4", [] {});
    EXPECT_EQ(done.size(), 1);
    EXPECT_TRUE(steps.isBusy());
    steps.finish();
    EXPECT_EQ(done.join(u' '), u"1 2 3 4 5");
    beside("6", [] {}); // not ended by what is still told of the others
    steps.add(at("7"));
    EXPECT_TRUE(test::eventually([&] { return !steps.isBusy(); }));
    EXPECT_EQ(done.join(u' '), u"1 2 3 4 5 6 7");
}

} // namespace
} // namespace corvatto
