#include "HistoryTest.h"

namespace corvatto {
namespace {

class ViewModel : public test::HistoryTest {
protected:
    test::FakeWorkspace workspace;
    std::optional<ClipboardMonitor> monitor{std::in_place, store, pasteboard, workspace, defaults};

    void SetUp() override {
        HistoryTest::SetUp();
        viewModel.monitor = &*monitor;
    }
    // Expects that copying the newest entry back changes nothing and prints `line`.
    void expectNothingCopied(const char* line) {
        const ClipboardItem item = newest();
        const qint64 count = pasteboard.count;
        test::CapturedOutput output;
        viewModel.copyItem(item);
        EXPECT_EQ(output.text(), QByteArray(line) + '\n');
        EXPECT_EQ(pasteboard.count, count);
        EXPECT_EQ(copiesOf(item.id), item.copyCount);
        EXPECT_EQ(dismissals, 0);
    }
};

TEST_F(ViewModel, TheSecondEntryIsSelectedAndMovesStopAtTheEnds) {
    viewModel.refresh();
    viewModel.moveUp();
    viewModel.moveDown();
    viewModel.selectAndCopy();
    EXPECT_EQ(selected(), u"(none)");
    EXPECT_EQ(pasteboard.count, 1);

    record({"C"});
    viewModel.refresh();
    EXPECT_EQ(selected(), u"C");
    viewModel.moveDown();
    viewModel.moveUp();
    EXPECT_EQ(selected(), u"C");

    record({"B", "A"});
    viewModel.refresh();
    EXPECT_EQ(shown(), u"A B C");
    QString road = selected();
    for (const int step : {-1, -1, +1, +1, +1}) {
        step < 0 ? viewModel.moveUp() : viewModel.moveDown();
        road += selected();
    }
    EXPECT_EQ(road, u"BAABCC");

    viewModel.setSelectedItemId(4711); // nothing that is on show
    viewModel.moveUp();
    viewModel.moveDown();
    viewModel.selectAndCopy();
    EXPECT_EQ(viewModel.selectedItemId(), 4711);
    EXPECT_EQ(pasteboard.count, 1);
    for (const bool up : {true, false}) {
        viewModel.setSelectedItemId(std::nullopt);
        up ? viewModel.moveUp() : viewModel.moveDown();
        EXPECT_EQ(selected(), u"A") << "both directions start at the first entry";
    }
}

TEST_F(ViewModel, SearchSelectsTheFirstMatchAndARefreshIgnoresTheSearchText) {
    record({"apple", "bread", "apple pie"});
    viewModel.refresh();
    const auto search = [this](const char* text) {
        viewModel.setSearchText(QString::fromUtf8(text));
        viewModel.search();
        return shown() + u'|' + selected();
    };
    EXPECT_EQ(search("apple"), u"apple pie apple|apple pie");
    EXPECT_EQ(search("nowhere"), u"|(none)");
    EXPECT_EQ(search("  "), u"apple pie bread apple|apple pie") << "blank, but not empty";
    EXPECT_EQ(search(""), u"apple pie bread apple|bread");

    search("bread");
    viewModel.refresh();
    EXPECT_EQ(shown(), u"apple pie bread apple");
    EXPECT_EQ(selected(), u"bread");
    EXPECT_EQ(viewModel.searchText(), u"bread") << "the field keeps its text";
}

TEST_F(ViewModel, AWriteIsSettledWithTheMonitorThenCountedThenDismissed) {
    const QString text = QStringLiteral("  a") + QChar(u'\0') + QStringLiteral("b 😀\n");
    store.insertOrUpdate(text, {});
    record({"newer"});
    viewModel.refresh();
    const qint64 id = *viewModel.selectedItemId();
    viewModel.onDismiss = [&] {
        ++dismissals;
        EXPECT_EQ(monitor->lastChangeCount(), pasteboard.count);
        EXPECT_EQ(copiesOf(id), 2);
        viewModel.refresh(); // what was copied is not to be read any more
    };
    viewModel.selectAndCopy();
    EXPECT_EQ(pasteboard.content.text, text);
    EXPECT_EQ(dismissals, 1);

    const qint64 count = pasteboard.count;
    viewModel.copyItem(-1);
    viewModel.copyItem(2);
    EXPECT_EQ(pasteboard.count, count);

    ClipboardItem empty = newest();
    empty.content.clear();
    empty.contentType = QStringLiteral("File"); // types are compared exactly: a text
    monitor.reset();
    viewModel.onDismiss = nullptr;
    viewModel.copyItem(empty);
    EXPECT_EQ(pasteboard.content.text, QString()) << "without a monitor and a panel, too";
    EXPECT_EQ(copiesOf(id), 3);
}

TEST_F(ViewModel, FilesThatAreLeftAreWrittenInTheirOrder) {
    const QString first = touch("a b%20.txt");
    const QString last = touch("图.txt");
    store.insertOrUpdateFile({first, path("gone"), home.path(), last}, {});
    viewModel.copyItem(newest());
    EXPECT_EQ(pasteboard.content.urls,
              (QList<QUrl>{QUrl::fromLocalFile(first), QUrl::fromLocalFile(home.path()),
                           QUrl::fromLocalFile(last)}));
    EXPECT_EQ(dismissals, 1);

    dismissals = 0;
    store.insertOrUpdateFile({path("gone"), path("gone too")}, {});
    expectNothingCopied("[HistoryViewModel] All file paths are missing — nothing copied.");
    EXPECT_EQ(pasteboard.content.urls.size(), 3);
}

TEST_F(ViewModel, AnImageIsWrittenAsAnImageUnlessItsFileHasGone) {
    QImage picture(3, 2, QImage::Format_RGB32);
    picture.fill(Qt::red);
    ASSERT_TRUE(picture.save(path("full.png")));
    store.insertOrUpdateImage(path("full.png"), path("thumbnail.png"), QStringLiteral("hash"), {}, {});
    viewModel.copyItem(newest());
    ASSERT_TRUE(pasteboard.content.image);
    EXPECT_EQ(pasteboard.content.image->pixels().convertToFormat(QImage::Format_RGB32), picture);
    EXPECT_TRUE(pasteboard.content.urls.isEmpty());
    EXPECT_EQ(dismissals, 1);

    dismissals = 0;
    touch("full.png"); // there, and no image
    expectNothingCopied("[HistoryViewModel] Image file missing — nothing copied.");
    QFile::remove(path("full.png"));
    expectNothingCopied("[HistoryViewModel] Image file missing — nothing copied.");
}

TEST_F(ViewModel, ClearingAsksFirstIfThereIsAnybodyToAsk) {
    record({"B", "A"});
    viewModel.refresh();
    viewModel.confirmClearAll = [] {
        return false;
    };
    viewModel.clearAll();
    EXPECT_EQ(shown(), u"A B");
    for (const bool asks : {true, false}) {
        viewModel.confirmClearAll = asks ? std::function<bool()>([] { return true; }) : nullptr;
        record({"C"});
        viewModel.clearAll();
        EXPECT_EQ(shown() + selected(), u"(none)");
        EXPECT_EQ(newest().id, 0);
    }
}

} // namespace
} // namespace corvatto
