// Owners of the clipboard that hang, die, lie or never stop: the panel opens and answers, nothing wrong is
// stored, and the next good copy is.
#include "EndToEndTest.h"

#include <QElapsedTimer>
#include <QLocalSocket>

namespace corvatto::test {

namespace {

const QList<Offer> megabyte{{"UTF8_STRING", QByteArray(1 << 20, 'x')}};

class HostileOwnerTest : public EndToEndTest {
protected:
    HostileOwnerTest() {
        database.fill({{"newest"}, {"second"}, {"needle"}});
        launch();
        hidePanel();
    }

    bool soonSaid(const QByteArray& line) {
        return soon([&] { return owner->hasPrinted(line); });
    }

    // The panel opens, takes what is typed, even Ctrl+V, and hides. Throws when it does not.
    void expectPanelToAnswer() {
        showPanel();
        x.key("ctrl+v ctrl+a");
        x.type("needle");
        hidePanel();
    }

    // How long the program takes at most to answer a word on its socket, which its event loop does, until
    // `condition` holds.
    template <typename Condition>
    qint64 longestStallUntil(Condition condition) {
        qint64 longest = 0;
        EXPECT_TRUE(soon([&] {
            QElapsedTimer time;
            time.start();
            QLocalSocket socket;
            socket.connectToServer(QString::fromUtf8(desktop.home() + "/runtime/corvatto/instance"));
            socket.write("nothing\n");
            EXPECT_TRUE(socket.waitForReadyRead()) << qPrintable(socket.errorString());
            longest = std::max(longest, time.elapsed());
            return condition();
        }));
        return longest;
    }

    void expectOnlyTheNextCopyStored(int expected = 3) {
        const auto rows = rowsAfterNextCopy();
        EXPECT_EQ(rows.size(), expected);
        for (const auto& row : rows) {
            EXPECT_EQ(row.copyCount, 1) << row.content.left(100).constData();
        }
    }
};

} // namespace

TEST_F(HostileOwnerTest, OneThatNeverAnswers) {
    for (const char* mute : {"--mute=1", "--mute=2"}) {
        SCOPED_TRACE(mute);
        copy({{"UTF8_STRING", "unheard"}, {"image/png", "unseen"}, {"text/uri-list", "file:///tmp"}}, {mute});
        ASSERT_TRUE(soon([this] { return owner->output().contains("request"); }));
        QElapsedTimer time;
        time.start();
        expectPanelToAnswer();
        EXPECT_LT(time.elapsed(), 4500); // a single read that waits takes longer
    }
    expectOnlyTheNextCopyStored();
}

TEST_F(HostileOwnerTest, OneThatDiesOrStopsInTheMiddleOfATransfer) {
    for (const char* end : {"--die-after=1", "--die-after=5", "--stop-after=3"}) {
        SCOPED_TRACE(end);
        copy(megabyte, {"--chunk=100000", end});
        const bool dies = QByteArray(end).startsWith("--die");
        EXPECT_TRUE(soon(
            [&] { return dies ? !owner->isRunning() : owner->output().count("chunk UTF8_STRING\n") == 3; }));
        expectPanelToAnswer();
    }
    expectOnlyTheNextCopyStored();
}

TEST_F(HostileOwnerTest, OneThatTrickles) {
    copy(megabyte, {"--chunk=100000", "--trickle=700", "--stay=1"});
    ASSERT_TRUE(soonSaid("chunk UTF8_STRING"));
    expectPanelToAnswer();
    EXPECT_FALSE(owner->hasPrinted("sent UTF8_STRING")); // all of it has happened during the transfer
    // What it still sends does not get into the next copy.
    const auto trickling = std::move(owner);
    const QByteArray next(1 << 20, 'n');
    copy({{"UTF8_STRING", next}}, {"--chunk=600000", "--trickle=1500"});
    EXPECT_TRUE(soonStored(next));
    expectOnlyTheNextCopyStored(4);
}

TEST_F(HostileOwnerTest, OneThatListsThousandsOfTargets) {
    constexpr qint64 noticeable = 250; // ms, on a busy machine
    copy({{"UTF8_STRING", "among hundreds"}}, {"--targets=1000"});
    EXPECT_LT(longestStallUntil([this] { return database.find("among hundreds").has_value(); }), noticeable);
    copy({{"UTF8_STRING", "hunter2"}, {"x-kde-passwordManagerHint", "secret"}}, {"--targets=5000"});
    EXPECT_LT(longestStallUntil([this] { return owner->hasPrinted("request x-kde-passwordManagerHint"); }),
              noticeable);
    const auto keepsSecret = std::move(owner);
    copy({{"UTF8_STRING", "unheard"}}, {"--targets=20000"});
    EXPECT_LT(longestStallUntil([this] { return owner->hasPrinted("request TARGETS"); }), noticeable);
    expectOnlyTheNextCopyStored(4);
    EXPECT_FALSE(keepsSecret->hasPrinted("request UTF8_STRING"));
}

TEST_F(HostileOwnerTest, OneThatAnswersWrongly) {
    for (const char* lie : {"--lie=1", "--lie=2", "--lie=3", "--lie=4", "--lie=5"}) {
        SCOPED_TRACE(lie);
        copy({{"UTF8_STRING", QByteArray("text of ") + lie + '.'}}, {lie});
        ASSERT_TRUE(soon([this] { return owner->output().contains("request"); }));
        expectPanelToAnswer();
        const bool isReadable = lie[6] == '1' || lie[6] == '3'; // as far as it tells; once
        EXPECT_TRUE(!isReadable || soonStored(QByteArray("text of ") + lie + '.'));
    }
    expectOnlyTheNextCopyStored(5);
}

TEST_F(HostileOwnerTest, OneThatAnnouncesHundredMegabytes) {
    copy(megabyte, {"--announce=104857600", "--stop-after=0"});
    ASSERT_TRUE(soonSaid("request UTF8_STRING"));
    expectPanelToAnswer();
    expectOnlyTheNextCopyStored();

    // Sent, too, behind an announcement of next to nothing.
    copy({{"UTF8_STRING", QByteArray(100 << 20, 'x')}}, {"--announce=10", "--chunk=1000000"});
    ASSERT_TRUE(soonSaid("chunk UTF8_STRING"));
    expectPanelToAnswer();
    expectOnlyTheNextCopyStored(4);
}

TEST_F(HostileOwnerTest, OneThatAnnouncesItselfAgainAndAgain) {
    copy({{"UTF8_STRING", "same"}}, {"--again=20"});
    EXPECT_TRUE(soonStored("same"));
    expectPanelToAnswer();
    EXPECT_TRUE(soon([this] { return owner->output().count("owner\n") >= 50; }));
    expectOnlyTheNextCopyStored(4); // no new ownership, no new copy

    for (const char* period : {"--again=50", "--again=3"}) {
        SCOPED_TRACE(period);
        copy({{"UTF8_STRING", period}}, {period, "--renew=1"});
        EXPECT_TRUE(soon([&] { return database.find(period).has_value(); }));
        expectPanelToAnswer();
        EXPECT_TRUE(owner->isRunning());
        showPanel();
        x.key("ctrl+a BackSpace Right Right Return"); // a write against the flood
        EXPECT_TRUE(soonHidden());
        EXPECT_TRUE(soon([this] { return owner->hasPrinted("lost"); }));
        rowsAfterNextCopy();
    }
    EXPECT_EQ(rowsAfterNextCopy().size(), 9); // nothing but what was copied
}

} // namespace corvatto::test
