// The ways on which content comes and goes.
#include "platform/wayland/IncomingStream.h"
#include "platform/wayland/OwnerProcess.h"
#include "support/Eventually.h"

#include <gtest/gtest.h>

#include <fcntl.h>

namespace corvatto::test {

// Our own text fields write while the event loop, which would read, waits for them.
TEST(IncomingStream, TakesTheTextOfATextFieldWithoutAnybodyReading) {
    const IncomingStream::Ends ends = IncomingStream::newEnds();
    ::fcntl(ends.theirs.number(), F_SETFL, O_NONBLOCK);
    const QByteArray longest(qsizetype{3} * 32'767, 'x'); // of characters that take three bytes each
    EXPECT_EQ(::write(ends.theirs.number(), longest.constData(), static_cast<std::size_t>(longest.size())),
              longest.size());
}

TEST(IncomingStream, TellsWhoHasSent) {
    IncomingStream::Ends ends = IncomingStream::newEnds();
    std::optional<IncomingStream::Result> result;
    IncomingStream stream(std::move(ends.ours), 100, std::chrono::seconds(10),
                          [&](IncomingStream::Result ended) { result = std::move(ended); });
    EXPECT_EQ(::write(ends.theirs.number(), "text", 4), 4);
    ends.theirs.close();
    ASSERT_TRUE(eventually([&] { return result.has_value(); }));
    EXPECT_EQ(result->outcome, TransferOutcome::complete);
    EXPECT_EQ(result->bytes, "text");
    EXPECT_EQ(result->sender, ::getpid());
}

TEST(OwnerProcess, TellsNothingOfAToolThatWasStartedForTheCopy) {
    using namespace std::chrono_literals;
    EXPECT_TRUE(OwnerProcess::watch(::getpid(), -10s)) << "old at the time of the copy";
    EXPECT_FALSE(OwnerProcess::watch(::getpid(), 1h)) << "younger than the copy";
    EXPECT_TRUE(OwnerProcess::watch(::getpid(), std::nullopt));
    EXPECT_FALSE(OwnerProcess::watch(0, std::nullopt));
}

} // namespace corvatto::test
