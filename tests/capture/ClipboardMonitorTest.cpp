#include "capture/ClipboardMonitor.h"

#include "settings/LaunchDefaults.h"
#include "settings/SettingsKeys.h"
#include "store/ContentHash.h"
#include "support/CapturedOutput.h"
#include "support/Eventually.h"
#include "support/FakePasteboard.h"
#include "support/FakeUserDefaults.h"
#include "support/FakeWorkspace.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace corvatto {
namespace {

using namespace std::chrono_literals;
using test::CapturedOutput;
using test::eventually;
using Content = test::FakePasteboard::Content;

class Monitor : public ::testing::Test {
protected:
    QTemporaryDir home;
    test::FakeUserDefaults defaults;
    Preferences preferences{defaults};
    ClipboardStore store{home.path(), preferences};
    test::FakePasteboard pasteboard;
    test::FakeWorkspace workspace;
    ClipboardMonitor monitor{store, pasteboard, workspace, defaults};
    int announced = 0;

    void SetUp() override {
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
    }
    void copy(Content content) {
        pasteboard.copy(std::move(content));
        tick();
    }

    QList<ClipboardItem> items() const { return store.fetchRecent(std::nullopt, 100); }
    ClipboardItem newest() const { return items().value(0); }

    static Image picture() {
        QImage pixels(3, 2, QImage::Format_RGB32);
        pixels.fill(Qt::blue);
        return Image(pixels);
    }
};

TEST_F(Monitor, RecordsByItselfWhatIsCopiedAfterTheStart) {
    pasteboard.copyText(QStringLiteral("before"));
    defaults.setNumber(SettingsKeys::clipboardPollingInterval, 0.1);
    monitor.start();
    workspace.frontmost = QStringLiteral("文本编辑器");
    pasteboard.copyText(QStringLiteral("  word "));
    ASSERT_TRUE(eventually([this] { return announced > 0; }));
    ASSERT_EQ(items().size(), 1);
    EXPECT_EQ(newest().content, u"  word ");
    EXPECT_EQ(newest().sourceApp, u"文本编辑器");
    workspace.frontmost.clear();
    pasteboard.copyText(QStringLiteral("nobody in front"));
    ASSERT_TRUE(eventually([this] { return announced > 1; }));
    EXPECT_EQ(newest().sourceApp, u"");
}

TEST_F(Monitor, ReadsOnlyWhatChangedAndOnlyOnce) {
    monitor.start();
    tick();
    EXPECT_EQ(pasteboard.reads, 0);
    for (const char* blank : {"", " \t\r\n\u00A0\u3000\u2028\u0085", "\v\f"}) {
        pasteboard.copyText(QString::fromUtf8(blank));
        tick();
    }
    copy({});
    const int reads = pasteboard.reads;
    tick();
    EXPECT_EQ(pasteboard.reads, reads) << "a change without an entry is dealt with as well";
    EXPECT_EQ(monitor.lastChangeCount(), pasteboard.count);
    EXPECT_TRUE(items().isEmpty());

    // A write-back by the program itself.
    pasteboard.setString(QStringLiteral("copied back"));
    monitor.setLastChangeCount(monitor.pasteboard().changeCount());
    tick();
    EXPECT_TRUE(items().isEmpty());
    EXPECT_EQ(announced, 0);

    pasteboard.copyText(QStringLiteral("again"));
    tick();
    pasteboard.copyText(QStringLiteral("again"));
    tick();
    EXPECT_EQ(newest().copyCount, 2);
    EXPECT_EQ(announced, 2);
}

TEST_F(Monitor, PrefersFilesToImagesToText) {
    monitor.start();
    const QList<QUrl> urls{QUrl::fromLocalFile(QStringLiteral("/b 100%/文件.txt")),
                           QUrl::fromLocalFile(QStringLiteral("/a/folder/")),
                           QUrl::fromLocalFile(QStringLiteral("/"))};
    copy({urls, picture(), {}, {}, QStringLiteral("names")});
    EXPECT_EQ(newest().contentType, u"file");
    EXPECT_EQ(newest().content, u"/b 100%/文件.txt\n/a/folder\n/");

    copy({{}, picture(), {}, {}, QStringLiteral("caption")});
    ASSERT_EQ(items().size(), 2);
    const ClipboardItem item = store.fetchRecent(QStringLiteral("image"), 1).value(0);
    const QString hash = sha256(QStringLiteral("image|") + sha256Hex(picture().pngData()));
    EXPECT_EQ(item.contentHash, hash);
    EXPECT_EQ(item.preview, QStringLiteral("Image 3\u00D72"));
    EXPECT_EQ(item.content, store.imagesDir() + u'/' + hash + QStringLiteral(".png"));
    EXPECT_EQ(item.thumbnailPath, store.thumbnailsDir() + u'/' + hash + QStringLiteral(".png"));
    EXPECT_EQ(QImage(item.content).convertToFormat(QImage::Format_RGB32), picture().pixels());

    // The same pixels offered in another form are the same entry, and clearing does not break the next
    // capture.
    copy({{}, {}, {}, picture().pngData(), {}});
    EXPECT_EQ(items().size(), 2);
    store.deleteAll();
    copy({{}, {}, picture().tiffData(), {}, {}});
    EXPECT_EQ(newest().contentHash, hash);
    EXPECT_TRUE(QFileInfo::exists(newest().content) && QFileInfo::exists(*newest().thumbnailPath));
}

TEST_F(Monitor, FallsBackToTextWhenAnImageCannotBeSavedOrRead) {
    monitor.start();
    ASSERT_TRUE(QDir(store.imagesDir()).removeRecursively());
    ASSERT_TRUE(QFile(store.imagesDir()).open(QIODevice::WriteOnly));
    CapturedOutput output;
    copy({{}, picture(), {}, {}, QStringLiteral("caption")});
    EXPECT_EQ(newest().content, u"caption");
    EXPECT_EQ(announced, 1);
    copy({{}, picture(), {}, {}, {}});
    EXPECT_EQ(items().size(), 1);
    EXPECT_EQ(announced, 1);
    EXPECT_EQ(output.text().count("[ImageStorage] ERROR: Failed to write original image.\n"), 2);
    copy({{}, {}, QByteArray("no image"), {}, QStringLiteral("text beside it")});
    EXPECT_EQ(newest().content, u"text beside it");
}

TEST_F(Monitor, AppliesTheIntervalWithinItsBounds) {
    const QList<std::pair<QVariant, std::chrono::milliseconds>> cases{
        {0.0, 500ms},  {-3, 500ms},  {0.05, 100ms},
        {0.1, 100ms},  {2, 2000ms},  {QStringLiteral("0.25"), 250ms},
        {5.0, 5000ms}, {12, 5000ms}, {QStringLiteral("often"), 500ms}};
    EXPECT_FALSE(timer()->isActive());
    for (const auto& [stored, expected] : cases) {
        defaults.setObject(SettingsKeys::clipboardPollingInterval, stored);
        monitor.start();
        EXPECT_EQ(timer()->intervalAsDuration(), expected) << stored.toString().toStdString();
        monitor.stop();
        EXPECT_FALSE(timer()->isActive());
    }
}

TEST_F(Monitor, FollowsEveryChangeOfTheIntervalAndNoOtherSetting) {
    monitor.start();
    EXPECT_EQ(timer()->intervalAsDuration(), 500ms);
    const int running = timer()->timerId();
    defaults.setInteger(SettingsKeys::maxItemCount, 5);
    defaults.setNumber(SettingsKeys::clipboardPollingInterval, -1); // as effective as before
    EXPECT_EQ(timer()->timerId(), running) << "started over";

    defaults.setNumber(SettingsKeys::clipboardPollingInterval, 2);
    EXPECT_EQ(timer()->intervalAsDuration(), 2000ms);
    defaults.setNumber(SettingsKeys::clipboardPollingInterval, 0.01);
    EXPECT_EQ(timer()->intervalAsDuration(), 100ms);

    monitor.stop();
    defaults.setNumber(SettingsKeys::clipboardPollingInterval, 1);
    EXPECT_FALSE(timer()->isActive()) << "a stopped monitor was woken by a setting";
    pasteboard.copyText(QStringLiteral("while stopped"));
    monitor.start();
    tick();
    EXPECT_TRUE(items().isEmpty());
}

} // namespace
} // namespace corvatto
