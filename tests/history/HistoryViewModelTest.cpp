#include "HistoryTest.h"

#include "support/CapturedOutput.h"

namespace corvatto {
namespace {

using ViewModel = test::HistoryTest;

TEST_F(ViewModel, AnySelectionMayBeMovedAndCopied) {
    viewModel.refresh(); // to nothing
    viewModel.moveDown();
    viewModel.selectAndCopy();
    record({"A"});
    viewModel.refresh();
    EXPECT_EQ(selected(), u"A");
    viewModel.moveDown();
    EXPECT_EQ(selected(), u"A") << "the last one";

    viewModel.setSelectedItemId(4711); // nothing that is on show
    viewModel.moveUp();
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
    record({"text", "newer"});
    viewModel.refresh();
    viewModel.onDismiss = [&] {
        ++dismissals;
        EXPECT_EQ(monitor->lastChangeCount(), pasteboard.count);
        EXPECT_EQ(newest().copyCount, 2);
        viewModel.refresh(); // what was copied is not to be read any more
    };
    viewModel.selectAndCopy();
    EXPECT_EQ(pasteboard.content.text, u"text");
    EXPECT_EQ(dismissals, 1);

    monitor.reset();
    viewModel.onDismiss = nullptr;
    viewModel.copyItem(2);
    EXPECT_EQ(pasteboard.content.text, u"text") << "there are two";
    viewModel.copyItem(1);
    EXPECT_EQ(pasteboard.content.text, u"newer") << "without a monitor and a panel, too";
}

TEST_F(ViewModel, WhatIsNotThereAnyMoreIsNotCopied) {
    const QString text = QString(100'000, u'x') + QStringLiteral("end");
    store.insertOrUpdate(text, {});
    viewModel.refresh();
    viewModel.selectAndCopy();
    EXPECT_TRUE(pasteboard.content.text == text);
    store.deleteAll(); // and the list still shows it
    const qint64 count = pasteboard.count;
    test::CapturedOutput output;
    viewModel.selectAndCopy();
    store.insertOrUpdateFile({QStringLiteral("/nowhere/a"), QStringLiteral("/nowhere/b")}, {});
    store.insertOrUpdateImage(QStringLiteral("/nowhere.png"), {}, QStringLiteral("hash"), {}, {});
    viewModel.refresh();
    viewModel.copyItem(0);
    viewModel.copyItem(1);
    EXPECT_EQ(output.text(), "[HistoryViewModel] Text missing — nothing copied.\n"
                             "[HistoryViewModel] Image file missing — nothing copied.\n"
                             "[HistoryViewModel] All file paths are missing — nothing copied.\n");
    EXPECT_EQ(pasteboard.count, count);
    EXPECT_EQ(dismissals, 1);
}

} // namespace
} // namespace corvatto
