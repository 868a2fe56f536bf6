#include "HistoryTest.h"

#include "support/CapturedOutput.h"
#include "support/Eventually.h"
#include "support/Files.h"

#include <QDir>

namespace corvatto {
namespace {

using ViewModel = test::HistoryTest;

TEST_F(ViewModel, AnySelectionMayBeMovedAndCopied) {
    viewModel.refresh(); // to nothing
    viewModel.moveDown();
    viewModel.selectAndCopy();
    record({u"A"_qs});
    viewModel.refresh();
    viewModel.moveDown();
    EXPECT_EQ(selected(), u"A") << "the last one";

    viewModel.setSelectedItemId(4711); // nothing that is on show
    viewModel.moveDown();
    viewModel.selectAndCopy();
    EXPECT_EQ(viewModel.selectedItemId(), 4711);
    EXPECT_EQ(pasteboard.count, 1);
    viewModel.setSelectedItemId(std::nullopt);
    viewModel.moveUp();
    EXPECT_EQ(selected(), u"A");
}

TEST_F(ViewModel, AWriteIsSettledWithTheMonitorThenCountedThenDismissed) {
    std::optional<ClipboardMonitor> monitor(std::in_place, store, pasteboard, defaults);
    viewModel.monitor = &*monitor;
    record({u"text"_qs, u"newer"_qs});
    viewModel.refresh();
    int dismissals = 0;
    viewModel.onDismiss = [&] {
        ++dismissals;
        EXPECT_EQ(monitor->lastChangeCount(), pasteboard.count);
        EXPECT_EQ(newest().copyCount, 2);
        viewModel.refresh(); // what was copied is not to be read any more
    };
    viewModel.selectAndCopy();
    EXPECT_EQ(dismissals, 1);

    monitor.reset();
    viewModel.onDismiss = nullptr;
    viewModel.copyItem(2);
    EXPECT_EQ(pasteboard.content.text, u"text") << "there are two";
    viewModel.copyItem(1);
    EXPECT_EQ(pasteboard.content.text, u"newer") << "without a monitor and a panel, too";
}

TEST_F(ViewModel, KeysWaitForTheResultsOfALongSearch) {
    int dismissals = 0;
    viewModel.onDismiss = [&] {
        ++dismissals;
    };
    const auto shown = [this] {
        QStringList texts;
        for (const ClipboardItem& item : viewModel.items()) {
            texts << item.content.prefix();
        }
        return texts.join(u' ');
    };
    record({u"needle 3"_qs, u"needle 2"_qs, u"needle 1"_qs});
    for (int number = 0; number < 12; ++number) {
        store.insertOrUpdate(QString::number(number), {});
    }
    store.setLongestSearch({}); // some rows
    viewModel.refresh();
    const auto search = [this](const char* text) {
        viewModel.setSearchText(QString::fromUtf8(text));
        viewModel.search();
    };
    search("nothing like it");
    viewModel.selectAndCopy(); // never happens: another letter has come
    search("needle");
    EXPECT_EQ(viewModel.items().size(), 15) << "the old list stays";
    viewModel.moveDown();
    viewModel.selectAndCopy();
    EXPECT_EQ(dismissals, 0);
    EXPECT_TRUE(test::eventually([&] { return dismissals > 0; }));
    EXPECT_EQ(shown(), u"needle 1 needle 2 needle 3");
    EXPECT_EQ(pasteboard.content.text, u"needle 2");

    search("nothing like it");
    viewModel.copyItem(0);
    viewModel.refresh();
    viewModel.moveUp();
    EXPECT_EQ(selected(), u"needle 2") << "the list is there";
    record({u"needle 0"_qs});
    search("needle");
    viewModel.copyItem(2);
    EXPECT_EQ(shown(), u"needle 0 needle 2") << "what was found first";
    EXPECT_TRUE(test::eventually([&] { return dismissals > 1; }));
    EXPECT_EQ(pasteboard.content.text, u"needle 1");
    EXPECT_EQ(selected(), u"needle 0");
}

TEST_F(ViewModel, ClearingTakesTheImageThatIsBeingSavedToo) {
    ClipboardMonitor monitor(store, pasteboard, defaults);
    viewModel.monitor = &monitor;
    int recorded = 0;
    monitor.onNewItem = [&recorded] {
        ++recorded;
    };
    monitor.start();
    pasteboard.copy({{}, Image(QImage(50, 50, QImage::Format_RGB32)), {}, {}, {}});
    viewModel.recordPendingCopy();
    viewModel.clearAll();
    EXPECT_TRUE(test::eventually([&] { return recorded == 1; }));
    store.finish();
    EXPECT_TRUE(viewModel.items().isEmpty() && store.fetchRecent(std::nullopt, 1).isEmpty());
    EXPECT_TRUE(QDir(store.imagesDir()).isEmpty());
}

TEST_F(ViewModel, CopiesFilesInOrderWithoutThoseThatHaveGoneAndAnImageAsItIsStored) {
    const QStringList paths{home.filePath(u"last 50%.txt"_qs), u"/gone"_qs, home.filePath(u"文件"_qs)};
    test::writeFile(paths[0], "x");
    test::writeFile(paths[2], "x");
    QImage pixels(4, 3, QImage::Format_RGB32);
    pixels.fill(Qt::darkCyan);
    ASSERT_TRUE(pixels.save(home.filePath(u"image.png"_qs)));
    store.insertOrUpdateFile(paths, {});
    store.insertOrUpdateImage(home.filePath(u"image.png"_qs), {}, u"hash"_qs, {}, {});
    viewModel.refresh();
    viewModel.copyItem(1);
    EXPECT_EQ(pasteboard.content.urls, QList({QUrl::fromLocalFile(paths[0]), QUrl::fromLocalFile(paths[2])}));
    viewModel.copyItem(0);
    EXPECT_EQ(pasteboard.content.image->pixels(), pixels);
}

TEST_F(ViewModel, WhatIsNotThereAnyMoreIsNotCopied) {
    record({QString(100'000, u'x')}); // of which the list holds the beginning only
    store.insertOrUpdateFile({u"/nowhere/a"_qs, u"/nowhere/b"_qs}, {});
    store.insertOrUpdateImage(u"/nowhere.png"_qs, {}, u"hash"_qs, {}, {});
    viewModel.refresh();
    store.deleteAll();
    store.finish();
    viewModel.onDismiss = [] {
        FAIL();
    };
    test::CapturedOutput output;
    for (const qsizetype index : {0, 1, 2}) {
        viewModel.copyItem(index);
    }
    EXPECT_EQ(output.text(), "[HistoryViewModel] Image file missing — nothing copied.\n"
                             "[HistoryViewModel] All file paths are missing — nothing copied.\n"
                             "[HistoryViewModel] Text missing — nothing copied.\n");
    EXPECT_EQ(pasteboard.count, 1);
}

} // namespace
} // namespace corvatto
