// Owners of the clipboard that hang, die, lie or never stop: the panel opens and answers, nothing wrong is
// stored, and the next good copy is.
#include "EndToEndTest.h"

#include <QElapsedTimer>

namespace corvatto::test {

namespace {

using ::testing::Each, ::testing::Field;

class HostileOwnerTest : public DesktopTest {
protected:
    void SetUp() override {
        database.fill({"newest", "second", "needle"});
        launch();
        hidePanel();
    }

    bool soonSaid(const QByteArray& line) {
        return soon([&] { return owner->hasPrinted(line); });
    }

    // The panel opens, takes what is typed, even Ctrl+V, and hides. Throws when it does not.
    void expectPanelToAnswer() {
        showPanel();
        desktop.key("ctrl+v ctrl+a");
        desktop.type("needle");
        hidePanel();
    }

    void expectOnlyTheNextCopyStored(int expected = 3) {
        const auto rows = rowsAfterNextCopy();
        EXPECT_EQ(rows.size(), expected);
        EXPECT_THAT(rows, Each(Field(&Database::Row::copyCount, 1)));
    }
};

ON_EVERY_DESKTOP(HostileOwnerTest);

} // namespace

TEST_P(HostileOwnerTest, OneThatNeverAnswersOrStopsOrDiesOrSendsMoreThanItSays) {
    const QByteArray content(70 << 20, 'x'); // more than is read
    for (const QByteArray option : {"--mute=1", "--stop-after=3", "--die-after=1", "--announce=10"}) {
        SCOPED_TRACE(option.toStdString());
        copy({{textTarget, content}}, {"--chunk=100000", option});
        ASSERT_TRUE(soon([this] { return owner->output().contains("request"); }));
        QElapsedTimer time;
        time.start();
        expectPanelToAnswer();
        EXPECT_LT(time.elapsed(), 4500); // a single read that waits takes longer
    }
    expectOnlyTheNextCopyStored();
}

TEST_P(HostileOwnerTest, OneThatTrickles) {
    copy({{textTarget, QByteArray(1 << 20, 'x')}}, {"--chunk=100000", "--trickle=700", "--stay=1"});
    ASSERT_TRUE(soonSaid("chunk " + textTarget));
    expectPanelToAnswer();
    EXPECT_FALSE(owner->hasPrinted("sent " + textTarget)); // all of it has happened during the transfer
    // What it still sends does not get into the next copy.
    const auto trickling = std::move(owner);
    const QByteArray next(1 << 20, 'n');
    copy({{textTarget, next}}, {"--chunk=600000", "--trickle=1500"});
    EXPECT_TRUE(soonStored(next));
    expectOnlyTheNextCopyStored(4);
}

TEST_P(HostileOwnerTest, OneThatListsThousandsOfTargetsAndASecretAmongThem) {
    copy({{textTarget, "among hundreds"}}, {"--targets=1000"});
    EXPECT_TRUE(soonStored("among hundreds"));
    copy({{textTarget, "hunter2"}, {"text/plain", "hunter2"}, {"x-kde-passwordManagerHint", "secret"}},
         {isX11() ? "--targets=5000" : "--targets=2000"}); // sway drops programs that are told of more
    ASSERT_TRUE(soonSaid("request x-kde-passwordManagerHint"));
    expectPanelToAnswer();
    EXPECT_FALSE(owner->hasPrinted("request " + textTarget));
    EXPECT_FALSE(owner->hasPrinted("request text/plain"));
    owner.reset();
    expectPanelToAnswer(); // the program has heard of the owner's end long ago
    EXPECT_TRUE(desktop.clipboardIsEmpty());
    expectOnlyTheNextCopyStored(4);
    EXPECT_FALSE(program->output().contains("hunter2"));
}

} // namespace corvatto::test
