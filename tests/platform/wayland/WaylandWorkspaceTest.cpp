// Where a copy comes from, as both protocols tell it.
#include "platform/wayland/WaylandWorkspace.h"

#include "FakeToplevels.h"
#include "base/ScopedEnvironment.h"
#include "platform/wayland/SurfaceRole.h"
#include "support/Eventually.h"
#include "support/Files.h"
#include "support/Printing.h"

#include <QDesktopServices>
#include <QGuiApplication>
#include <QStandardPaths>
#include <QWindow>

#include <gtest/gtest.h>

namespace corvatto::test {
namespace {

class Workspace : public ::testing::Test {
protected:
    Workspace() {
        QGuiApplication::setApplicationName(QStringLiteral("Corvatto"));
        QGuiApplication::setDesktopFileName(QStringLiteral("corvatto"));
    }

    bool soonNamed(WaylandWorkspace& workspace, const char* name) {
        return eventually([&] { return workspace.nameOfCopySource(false) == QLatin1String(name); },
                          std::chrono::seconds(2));
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

struct Protocol {
    const char* name;
    std::unique_ptr<FakeToplevels> (*offer)(WaylandServer&);
};

class WorkspaceWithToplevels : public Workspace, public ::testing::WithParamInterface<Protocol> {
protected:
    std::unique_ptr<FakeToplevels> toplevels = GetParam().offer(server);
    std::unique_ptr<WaylandConnection> connection = server.connect();
    WaylandWorkspace workspace{*connection};

    void SetUp() override {
        bool isBound = false;
        connection->sync([&isBound] { isBound = true; });
        ASSERT_TRUE(eventually([&isBound] { return isBound; }));
    }
};

template <typename Toplevels, int version>
std::unique_ptr<FakeToplevels> offer(WaylandServer& server) {
    return std::make_unique<Toplevels>(server, version);
}

INSTANTIATE_TEST_SUITE_P(, WorkspaceWithToplevels,
                         ::testing::Values(Protocol{"Wlr1", offer<FakeWlrToplevels, 1>},
                                           Protocol{"Wlr3", offer<FakeWlrToplevels, 3>},
                                           Protocol{"Plasma", offer<FakePlasmaToplevels, 16>}),
                         [](const auto& each) { return each.param.name; });

TEST_P(WorkspaceWithToplevels, TheSourceIsTheActiveWindowOrTheLastOneUnderAWindowOfOurs) {
    const QDir entries(QStandardPaths::writableLocation(QStandardPaths::ApplicationsLocation));
    writeFile(entries.filePath(QStringLiteral("org.example.Writer.desktop")),
              "[Desktop Entry]\nName=Writer\n");

    toplevels->open(1, "org.example.Writer");
    toplevels->open(2, "unknown");
    toplevels->activate(1);
    EXPECT_TRUE(soonNamed(workspace, "Writer"));
    toplevels->activate(2);
    EXPECT_TRUE(soonNamed(workspace, "unknown"));
    toplevels->activate(0);
    EXPECT_TRUE(soonNamed(workspace, "")) << "nothing is in front of an empty desktop";

    QWindow panel;
    panel.show();
    panel.requestActivate();
    EXPECT_TRUE(soonNamed(workspace, "unknown"));
    toplevels->close(1);
    toplevels->close(2);
    EXPECT_TRUE(soonNamed(workspace, ""));
    toplevels->open(3, "third");
    toplevels->close(3);
    toplevels->open(4, "fourth");
    toplevels->activate(4);
    EXPECT_TRUE(soonNamed(workspace, "fourth"));
}

TEST_P(WorkspaceWithToplevels, OurOwnWindowsAreTheSourceOnlyOfWhatIsCopiedInThem) {
    toplevels->open(1, "other");
    toplevels->open(2, "Corvatto");
    toplevels->activate(1);
    EXPECT_TRUE(soonNamed(workspace, "other"));
    toplevels->activate(2);
    EXPECT_TRUE(soonNamed(workspace, ""));
    EXPECT_EQ(workspace.nameOfCopySource(true), u"Corvatto");
}

TEST_F(Workspace, AWindowIsActiveWithTheEndOfWhatIsSaidOfIt) {
    FakeWlrToplevels toplevels(server, 3);
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
    toplevels.activate(1);
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
    const FakePlasmaToplevels tooOld(server, 12);
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
