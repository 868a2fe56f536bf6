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

TEST_F(HostileOwnerTest, OneThatNeverAnswersOrStopsOrDies) {
    for (const QByteArray option : {"--mute=1", "--mute=2", "--stop-after=3", "--die-after=1"}) {
        SCOPED_TRACE(option.toStdString());
        copy(megabyte, {"--chunk=100000", option});
        ASSERT_TRUE(soon([&] {
            return option.startsWith("--die")    ? !owner->isRunning()
                   : option.startsWith("--stop") ? owner->output().count("chunk UTF8_STRING\n") == 3
                                                 : owner->output().contains("request");
        }));
        QElapsedTimer time;
        time.start();
        expectPanelToAnswer();
        EXPECT_LT(time.elapsed(), 4500); // a single read that waits takes longer
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
    expectOnlyTheNextCopyStored(4);
    EXPECT_FALSE(keepsSecret->hasPrinted("request UTF8_STRING"));
}

TEST_F(HostileOwnerTest, OneThatSendsHundredMegabytesAndAnnouncesTen) {
    copy({{"UTF8_STRING", QByteArray(100 << 20, 'x')}}, {"--announce=10", "--chunk=1000000"});
    ASSERT_TRUE(soonSaid("chunk UTF8_STRING"));
    expectPanelToAnswer();
    expectOnlyTheNextCopyStored();
}

TEST_F(HostileOwnerTest, OneThatAnnouncesItselfAgainAndAgain) {
    copy({{"UTF8_STRING", "same"}}, {"--again=20"});
    EXPECT_TRUE(soonStored("same"));
    expectPanelToAnswer();
    EXPECT_TRUE(soon([this] { return owner->output().count("owner\n") >= 50; }));
    expectOnlyTheNextCopyStored(4); // no new ownership, no new copy

    copy({{"UTF8_STRING", "anew"}}, {"--again=3", "--renew=1"});
    EXPECT_TRUE(soon([&] { return database.find("anew").has_value(); }));
    expectPanelToAnswer();
    showPanel();
    x.key("ctrl+a BackSpace Right Right Return"); // a write against the flood
    EXPECT_TRUE(soonHidden());
    EXPECT_TRUE(soon([this] { return owner->hasPrinted("lost"); }));
    EXPECT_EQ(rowsAfterNextCopy().size(), 6); // nothing but what was copied
}

} // namespace corvatto::test
