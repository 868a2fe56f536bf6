// The tray on a session bus of the test's own, which comes late, and anew.
#include "platform/freedesktop/StatusNotifierTray.h"

#include "endtoend/Process.h"
#include "endtoend/TrayHost.h"

#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace corvatto::test {
namespace {

// After all that was asked before.
bool isAsked(StatusNotifierHost& host) {
    QSignalSpy answers(&host, &StatusNotifierHost::answered);
    host.query();
    return eventually([&answers] { return !answers.isEmpty(); });
}

TEST(StatusNotifierTray, IsThereOnceSomebodyShowsIcons) {
    const QTemporaryDir directory;
    const QByteArray address = "unix:path=" + QFile::encodeName(directory.filePath(QStringLiteral("bus")));
    const Process bus("dbus-daemon", {"--session", "--nofork", "--nopidfile", "--address", address},
                      QProcessEnvironment::systemEnvironment(), true);
    ASSERT_TRUE(soon([&] { return QFile::exists(directory.filePath(QStringLiteral("bus"))); }));
    qputenv("DBUS_SESSION_BUS_ADDRESS", address);

    StatusNotifierTray tray;
    StatusNotifierHost question;
    const QSignalSpy available(&tray, &Tray::available);
    tray.startWatching();
    ASSERT_TRUE(isAsked(question));
    {
        TrayHost host(address);
        ASSERT_TRUE(isAsked(question));
        EXPECT_TRUE(available.isEmpty()) << "icons can be announced, but nobody shows them";
        host.come();
        EXPECT_TRUE(eventually([&available] { return !available.isEmpty(); }));
    }
    TrayHost host(address);
    host.come();
    ASSERT_TRUE(isAsked(question)); // the tray has heard of the host now, and asks
    ASSERT_TRUE(isAsked(question));
    EXPECT_EQ(available.size(), 1) << "an icon that is there announces itself to the next tray";
}

} // namespace
} // namespace corvatto::test
