// The end of the connection to the compositor.
#include "WaylandTest.h"

namespace corvatto::test {

class WaylandConnectionTest : public WaylandTest {};

TEST_F(WaylandConnectionTest, TellsOnceThatTheCompositorIsGone) {
    start();
    int told = 0;
    QObject::connect(connection.get(), &WaylandConnection::disconnected, [&] { ++told; });
    const auto captured = std::make_shared<int>();
    connection->sync([captured] { ADD_FAILURE() << "nobody has answered"; });
    compositor->disconnect();
    EXPECT_TRUE(eventually([&] { return told > 0; }));
    pasteboard->setString(QStringLiteral("into the void"));
    bool isHandedOver = false;
    pasteboard->handOver([&] { isHandedOver = true; });
    EXPECT_TRUE(eventually([&] { return isHandedOver; }));
    EXPECT_EQ(pasteboard->string(), QStringLiteral("into the void"));
    EXPECT_EQ(told, 1);
    pasteboard.reset();
    connection.reset();
    EXPECT_EQ(captured.use_count(), 1) << "what waited for an answer is kept";
}

} // namespace corvatto::test
