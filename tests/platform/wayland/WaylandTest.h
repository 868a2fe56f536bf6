// A pasteboard on a compositor that the test plays.
#pragma once

#include "FakeCompositor.h"
#include "platform/wayland/WaylandPasteboard.h"
#include "support/CapturedOutput.h"
#include "support/Eventually.h"

#include <gtest/gtest.h>

#include <csignal>
#include <optional>

namespace corvatto::test {

class WaylandTest : public ::testing::Test {
protected:
    WaylandTest() { std::signal(SIGPIPE, SIG_IGN); } // as the program does

    void start(const char* manager = "zwlr_data_control_manager_v1", int version = 2) {
        compositor.emplace(manager, version);
        connectAndLook(manager);
    }
    void connectAndLook(const QByteArray& dataControl = "zwlr_data_control_manager_v1") {
        connection = compositor->connect();
        ASSERT_TRUE(connection);
        pasteboard.emplace(
            *connection, dataControl, [this] { return inFront; }, limits, xPrograms);
        letGo();
    }
    // Has the connection deal with all that it and the compositor have sent each other.
    void letGo() {
        bool isHandled = false;
        connection->sync([&] { isHandled = true; });
        EXPECT_TRUE(eventually([&] { return isHandled; }));
    }
    bool soonCopied(const QString& text) {
        return eventually([&] { return pasteboard->string() == text; });
    }
    bool soonCounted(qint64 count) {
        return eventually([&] { return pasteboard->changeCount() == count; });
    }
    // What another program gets that pastes.
    QByteArray paste(const QByteArray& type) {
        const FileDescriptor from = compositor->ask(type);
        QByteArray all, piece(1 << 16, '\0');
        EXPECT_TRUE(eventually([&] {
            const ssize_t length =
                ::read(from.number(), piece.data(), static_cast<std::size_t>(piece.size()));
            all += piece.left(static_cast<qsizetype>(std::max<ssize_t>(length, 0)));
            return length == 0;
        }));
        return all;
    }

    std::optional<FakeCompositor> compositor;
    std::unique_ptr<WaylandConnection> connection;
    QString inFront;
    ClipboardReadLimits limits;
    WaylandPasteboard::XPrograms xPrograms = WaylandPasteboard::XPrograms::none;
    std::optional<WaylandPasteboard> pasteboard; // goes before the connection
};

} // namespace corvatto::test
