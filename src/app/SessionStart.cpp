#include "app/SessionStart.h"

#include "app/WaylandClipboardSession.h"
#include "app/WaylandSession.h"
#include "app/X11Session.h"
#include "base/Diagnostics.h"
#include "base/ScopedEnvironment.h"
#include "platform/wayland/CompositorProbe.h"

#include <QDir>

#include <algorithm>
#include <optional>
#include <utility>

namespace corvatto {
namespace {

bool hasWaylandPlugin() {
    const QStringList libraries = QCoreApplication::libraryPaths();
    return std::any_of(libraries.cbegin(), libraries.cend(), [](const QString& path) {
        return !QDir(path + QStringLiteral("/platforms"))
                    .entryList({QStringLiteral("libqwayland*.so")}, QDir::Files)
                    .isEmpty();
    });
}

DisplayFacts displayFacts(const CompositorAbilities& compositor) {
    return {compositor.isReachable, !compositor.dataControl.isEmpty(), compositor.hasLayers,
            hasWaylandPlugin(), &XcbConnection::serverIsReachable};
}

DisplaySystem bestWanted() {
    const QString name = qEnvironmentVariable("CORVATTO_PLATFORM");
    const auto wanted = displaySystemNamed(name);
    if (!wanted && !name.isEmpty()) {
        printLine(QStringLiteral("[CorvattoApp] ERROR: CORVATTO_PLATFORM is \"%1\", which is none of "
                                 "\"wayland\", \"wayland-clipboard\" and \"x11\"; not used.")
                      .arg(name));
    }
    return wanted.value_or(DisplaySystem::wayland);
}

std::unique_ptr<QApplication> newApplication(DisplaySystem system, int& argc, char** argv) {
    if (system != DisplaySystem::wayland) {
        const ScopedEnvironment environment{{"QT_QPA_PLATFORM", "xcb"}};
        return std::make_unique<QApplication>(argc, argv);
    }
    const ScopedEnvironment environment{{"QT_QPA_PLATFORM", "wayland;xcb"}};
    return std::make_unique<QApplication>(argc, argv);
}

std::unique_ptr<Session> openSession(DisplaySystem system, const QByteArray& dataControl) {
    switch (system) {
    case DisplaySystem::wayland:
        return WaylandSession::open(dataControl);
    case DisplaySystem::waylandClipboard:
        return WaylandClipboardSession::open(dataControl);
    case DisplaySystem::xwayland:
        return X11Session::open(X11Session::Server::xwayland);
    case DisplaySystem::x11:
        return X11Session::open(X11Session::Server::x11);
    }
    return nullptr;
}

// The ways after `system` that work with the application object that there is.
std::optional<DisplaySystem> nextAfter(DisplaySystem system, const DisplayFacts& facts) {
    if (system == DisplaySystem::x11 || QApplication::platformName() != QLatin1String("xcb")) {
        return std::nullopt;
    }
    return chooseDisplaySystem(facts, static_cast<DisplaySystem>(static_cast<int>(system) + 1));
}

} // namespace

StartedSession startSession(int& argc, char** argv) {
    // It was given to this start. Programs that we open would use it as if it were theirs.
    qunsetenv("XDG_ACTIVATION_TOKEN");
    StartedSession started;
    const CompositorAbilities compositor = probeCompositor();
    const DisplayFacts facts = displayFacts(compositor);
    auto system = chooseDisplaySystem(facts, bestWanted());
    if (!system) {
        // Qt would abort here, with a message for developers.
        printLine(u"[CorvattoApp] ERROR: Cannot connect to an X server, is DISPLAY set?");
        return started;
    }
    started.application = newApplication(*system, argc, argv);
    if (*system == DisplaySystem::wayland && QApplication::platformName() == QLatin1String("xcb")) {
        system = nextAfter(*system, facts); // Qt could not talk to the compositor
    }
    for (; system && !started.session; system = nextAfter(*system, facts)) {
        started.session = openSession(*system, compositor.dataControl);
        started.displaySystem = *system;
    }
    if (started.session) {
        printLine(QStringLiteral("[CorvattoApp] %1").arg(description(started.displaySystem)));
    }
    return started;
}

} // namespace corvatto
