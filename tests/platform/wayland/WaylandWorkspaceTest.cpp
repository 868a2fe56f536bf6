// What no compositor of the end-to-end tests tells, or tells in this order.
#include "platform/wayland/WaylandWorkspace.h"

#include "FakeToplevels.h"
#include "base/ScopedEnvironment.h"
#include "platform/wayland/SurfaceRole.h"
#include "support/Eventually.h"
#include "support/Printing.h"

#include <QDesktopServices>
#include <QGuiApplication>

#include <gtest/gtest.h>

namespace corvatto::test {
namespace {

class Workspace : public ::testing::Test {
protected:
    Workspace() {
        QGuiApplication::setApplicationName(QStringLiteral("Corvatto"));
        QGuiApplication::setDesktopFileName(QStringLiteral("corvatto"));
    }

    WaylandServer server;
};

// Takes the place of the program that is opened.
class Opened : public QObject {
    Q_OBJECT

public:
    Opened() { QDesktopServices::setUrlHandler(QStringLiteral("test"), this, "open"); }
    ~Opened() override { QDesktopServices::unsetUrlHandler(QStringLiteral("test")); }

    QUrl url;
    bool seesVariable = false;

public Q_SLOTS:
    void open(const QUrl& opened) {
        url = opened;
        seesVariable = qEnvironmentVariableIsSet(rolelessVariable);
    }
};

TEST_F(Workspace, AWindowIsActiveWithTheEndOfWhatIsSaidOfIt) {
    FakeToplevels toplevels(server);
    const auto connection = server.connect();
    WaylandWorkspace workspace(*connection);
    const auto hear = [&connection] {
        bool isHeard = false;
        connection->sync([&isHeard] { isHeard = true; });
        return eventually([&isHeard] { return isHeard; });
    };
    ASSERT_TRUE(hear());
    toplevels.open(1, "first");
    toplevels.open(2, "second");
    toplevels.announceState(1, true);
    toplevels.announceStateWithoutDone(2, true);
    ASSERT_TRUE(hear());
    EXPECT_EQ(workspace.nameOfCopySource(false), u"first");
    // Two seats, with a window each. The first one's announces a change that is none of this.
    toplevels.announceState(2, true);
    toplevels.announceState(1, true);
    ASSERT_TRUE(hear());
    EXPECT_EQ(workspace.nameOfCopySource(false), u"second");
}

TEST_F(Workspace, NamesAreEmptyWhereTheCompositorDoesNotTell) {
    const auto connection = server.connect();
    WaylandWorkspace workspace(*connection);
    EXPECT_EQ(workspace.nameOfCopySource(false), QString());
    EXPECT_EQ(workspace.nameOfCopySource(true), u"Corvatto");
}

TEST_F(Workspace, WhatIsOpenedSeesNoVariableThatIsMeantForOurWindows) {
    const auto connection = server.connect();
    WaylandWorkspace workspace(*connection);
    Opened opened;
    const ScopedEnvironment ofOurs{{rolelessVariable, "1"}};
    EXPECT_TRUE(workspace.openURL(QUrl(QStringLiteral("test:page"))));
    EXPECT_EQ(opened.url.path(), u"page");
    EXPECT_FALSE(opened.seesVariable);
    EXPECT_TRUE(qEnvironmentVariableIsSet(rolelessVariable));
}

} // namespace
} // namespace corvatto::test

#include "WaylandWorkspaceTest.moc"
