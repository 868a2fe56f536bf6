#include "capture/ClipboardMonitor.h"

#include "settings/LaunchDefaults.h"
#include "settings/SettingsKeys.h"
#include "store/ContentHash.h"
#include "support/Eventually.h"
#include "support/FakePasteboard.h"
#include "support/FakeUserDefaults.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace corvatto {
namespace {

using namespace std::chrono_literals;

class Monitor : public ::testing::Test {
protected:
    QTemporaryDir home;
    test::FakeUserDefaults defaults;
    Preferences preferences{defaults};
    ClipboardStore store{home.path(), preferences};
    test::FakePasteboard pasteboard;
    ClipboardMonitor monitor{store, pasteboard, defaults};

    int announced = 0;

    void SetUp() override {
        store.finish(); // with its opening
        registerLaunchDefaults(defaults);
        monitor.onNewItem = [this] {
            ++announced;
        };
    }
    QTimer* timer() const { return monitor.findChild<QTimer*>(); }

    // What the monitor does when its interval has passed.
    void tick() const {
        ASSERT_TRUE(timer()->isActive());
        QTimerEvent event(timer()->timerId());
        QCoreApplication::sendEvent(timer(), &event);
        EXPECT_FALSE(timer()->isActive()) << "wakes up for nothing";
    }
    void copy(test::FakePasteboard::Content content) {
        pasteboard.copy(std::move(content));
        tick();
        monitor.finish();
    }

    void clear() {
        store.deleteAll();
        store.finish();
    }

    QList<ClipboardItem> items() { return store.fetchRecent(std::nullopt, 100); }
    ClipboardItem newest() { return items().value(0); }

    static Image picture() {
        QImage pixels(3, 2, QImage::Format_RGB32);
        pixels.fill(Qt::blue);
        return Image(pixels);
    }
};

TEST_F(Monitor, ReadsOnlyWhatChangedAndOnlyOnce) {
    monitor.start();
    EXPECT_FALSE(timer()->isActive());
    for (const char* blank : {"", " \t\r\n\u00A0\u3000\u2028\u0085", "\v\f"}) {
        pasteboard.copyText(QString::fromUtf8(blank));
        tick();
    }
    copy({});
    const int reads = pasteboard.reads;
    monitor.checkNow();
    EXPECT_EQ(pasteboard.reads, reads) << "a change without an entry is dealt with as well";
    pasteboard.setString(QStringLiteral("copied back")); // by the program itself
    monitor.ignoreCurrentContent();
    EXPECT_FALSE(timer()->isActive());
    monitor.checkNow();
    EXPECT_TRUE(items().isEmpty());
    EXPECT_EQ(announced, 0);
    copy({{}, {}, {}, {}, QStringLiteral("text")});
    EXPECT_EQ(announced, 1);
}

TEST_F(Monitor, AnImageIsItsPixelsAndADirectoryItsPathWithoutASlash) {
    monitor.start();
    copy({{}, picture(), {}, {}, QStringLiteral("caption")});
    const QString hash = sha256(QStringLiteral("image|") + sha256Hex(picture().pngData()));
    EXPECT_EQ(newest().contentHash, hash);
    copy({{}, {}, {}, picture().pngData(), {}});
    EXPECT_EQ(newest().copyCount, 2) << "the same pixels in another form";
    clear();
    copy({{}, {}, picture().tiffData(), {}, {}});
    EXPECT_EQ(newest().contentHash, hash);
    for (const auto& [path, directory] : {std::pair(newest().content.prefix(), store.imagesDir()),
                                          {*newest().thumbnailPath, store.thumbnailsDir()}}) {
        EXPECT_EQ(path, QStringLiteral("%1/%2.png").arg(directory, hash));
        EXPECT_TRUE(QFileInfo::exists(path));
    }

    clear();
    const QList<QUrl> urls{QUrl::fromLocalFile(QStringLiteral("/a/folder/")),
                           QUrl::fromLocalFile(QStringLiteral("/"))};
    copy({urls, picture(), {}, {}, {}}); // files come with icons
    EXPECT_EQ(newest().content.prefix(), u"/a/folder\n/");

    clear();
    ASSERT_TRUE(QFile(store.imagesDir()).open(QIODevice::WriteOnly)); // in the way
    copy({{}, picture(), {}, {}, QStringLiteral("caption")});
    EXPECT_EQ(newest().content.prefix(), u"caption") << "stands in for an image that cannot be saved";
}

TEST_F(Monitor, WritesTheFilesOfAnImageBesideTheEventLoopAndKeepsTheOrderOfCopies) {
    monitor.start();
    pasteboard.copy({{}, picture(), {}, {}, {}});
    tick();
    pasteboard.copyText(QStringLiteral("after it"));
    tick();
    pasteboard.copyText(QStringLiteral("last"));
    tick();
    EXPECT_TRUE(items().isEmpty()) << "waited for the disk";
    EXPECT_EQ(announced, 0);
    EXPECT_TRUE(test::eventually([&] { return announced == 3; }));
    QMap<qint64, QString> previews;
    for (const ClipboardItem& item : items()) {
        previews[item.id] = item.preview;
    }
    EXPECT_EQ(previews.values(),
              QStringList({QStringLiteral("Image 3×2"), QStringLiteral("after it"), QStringLiteral("last")}));

    pasteboard.copy({{}, picture(), {}, {}, {}});
    tick();
    monitor.stop();
    monitor.finish();
    EXPECT_EQ(store.fetchRecent(QStringLiteral("Image"), 1).value(0).copyCount, 2)
        << "what was found is recorded before the end";
}

TEST_F(Monitor, LooksAtOnceWhenItIsAskedTo) {
    pasteboard.copyText(QStringLiteral("before it runs"));
    monitor.checkNow();
    EXPECT_TRUE(items().isEmpty());
    monitor.start();
    pasteboard.copyText(QStringLiteral("just now"));
    pasteboard.sourceApplication = QStringLiteral("Editor");
    monitor.checkNow();
    EXPECT_EQ(newest().preview, u"just now");
    EXPECT_EQ(newest().sourceApp, u"Editor");
    EXPECT_FALSE(timer()->isActive());
    EXPECT_EQ(newest().copyCount, 1);
}

TEST_F(Monitor, TicksAtWholeIntervalsAfterTheStart) {
    defaults.setNumber(SettingsKeys::clipboardPollingInterval, 5);
    QElapsedTimer clock;
    clock.start();
    monitor.start();
    const qint64 latestStart = clock.elapsed();
    ASSERT_TRUE(test::eventually([&clock] { return clock.elapsed() >= 100; }));
    for (const char* text : {"first", "second"}) { // and looking before the tick does not move the next one
        pasteboard.copyText(QString::fromUtf8(text));
        const qint64 before = clock.elapsed();
        const qint64 remaining = timer()->remainingTime();
        EXPECT_GE(clock.elapsed() + remaining, 5000 - 1);
        EXPECT_LE(before + remaining, latestStart + 5000 + 1);
        monitor.checkNow();
        EXPECT_EQ(newest().preview, QString::fromUtf8(text));
    }
}

TEST_F(Monitor, FollowsTheIntervalWithinItsBoundsAndNoOtherSetting) {
    defaults.setNumber(SettingsKeys::clipboardPollingInterval, 1);
    EXPECT_FALSE(timer()->isActive()) << "woken by a setting";
    monitor.start();
    for (const auto& [stored, expected] :
         QList<std::pair<QVariant, std::chrono::milliseconds>>{{-3, 500ms},
                                                               {0.05, 100ms},
                                                               {QStringLiteral("0.25"), 250ms},
                                                               {12, 5000ms},
                                                               {QStringLiteral("often"), 500ms},
                                                               {1, 1000ms}}) { // as at the start
        pasteboard.copyText(QStringLiteral("waiting"));
        QElapsedTimer clock;
        clock.start();
        defaults.setObject(SettingsKeys::clipboardPollingInterval, stored);
        EXPECT_LE(timer()->intervalAsDuration(), expected) << stored.toString().toStdString();
        EXPECT_GE(timer()->intervalAsDuration(), expected - std::chrono::milliseconds(clock.elapsed() + 1))
            << stored.toString().toStdString();
    }
    monitor.ignoreCurrentContent();
    defaults.setNumber(SettingsKeys::clipboardPollingInterval, 0.1);
    pasteboard.copyText(QStringLiteral("while settings are written"));
    EXPECT_TRUE(test::eventually([this] {
        defaults.setInteger(SettingsKeys::maxItemCount, 5);
        defaults.setNumber(SettingsKeys::clipboardPollingInterval, 0.05); // as effective as before
        return !items().isEmpty();
    })) << "starts over each time";
    clear();

    monitor.stop();
    defaults.setNumber(SettingsKeys::clipboardPollingInterval, 1);
    EXPECT_FALSE(timer()->isActive()) << "woken by a setting";
    pasteboard.copyText(QStringLiteral("while stopped"));
    monitor.start();
    monitor.checkNow();
    EXPECT_FALSE(timer()->isActive());
    EXPECT_TRUE(items().isEmpty());
}

} // namespace
} // namespace corvatto
