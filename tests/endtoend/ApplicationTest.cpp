// The command line, and a second start.
#include "EndToEndTest.h"

namespace corvatto::test {

namespace {

class ApplicationTest : public EndToEndTest {
protected:
    std::optional<int> corvatto(const QByteArrayList& arguments) {
        return Process(CORVATTO_PROGRAM, arguments, desktop.environment(), true).exitStatus();
    }
};

} // namespace

TEST_F(ApplicationTest, ASecondStartAndTheCommandLineReachTheRunningProgram) {
    EXPECT_EQ(corvatto({"--toggle"}), 1); // none is running
    launch();
    hidePanel();
    EXPECT_EQ(corvatto({}), 0);
    EXPECT_TRUE(soon([this] { return panelHasKeyboard(); }));
    EXPECT_EQ(corvatto({"--toggle"}), 0);
    EXPECT_TRUE(soonHidden());
    EXPECT_EQ(corvatto({"--show"}), 0);
    EXPECT_TRUE(soon([this] { return panelHasKeyboard(); }));
    EXPECT_EQ(corvatto({"--nonsense"}), 2);
    EXPECT_EQ(corvatto({"--version"}), 0);
    EXPECT_EQ(corvatto({"--quit"}), 0);
    EXPECT_EQ(program->exitStatus(), 0);
    EXPECT_EQ(corvatto({"--quit"}), 1);
    launch(); // and it starts again
}

} // namespace corvatto::test
