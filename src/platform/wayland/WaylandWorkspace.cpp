#include "platform/wayland/WaylandWorkspace.h"

#include "base/ScopedEnvironment.h"
#include "platform/wayland/SurfaceRole.h"

#include <QGuiApplication>

namespace corvatto {
namespace {

bool isOurs(const ToplevelWatcher::Toplevel& toplevel) {
    // Our desktop entry, or our class under XWayland, which differs in case.
    return toplevel.applicationId.compare(QGuiApplication::desktopFileName(), Qt::CaseInsensitive) == 0;
}

} // namespace

WaylandWorkspace::WaylandWorkspace(WaylandConnection& connection)
    : m_toplevels(ToplevelWatcher::create(connection)) {}

bool WaylandWorkspace::openURL(const QUrl& url) {
    const ScopedEnvironment ofOthers{{rolelessVariable, nullptr}};
    return FreedesktopWorkspace::openURL(url);
}

QString WaylandWorkspace::nameOfCopySource(bool isOwnCopy) {
    if (isOwnCopy) {
        return applicationName({QGuiApplication::desktopFileName(), QGuiApplication::applicationName()});
    }
    const auto* toplevel = m_toplevels ? m_toplevels->lastActive() : nullptr;
    const bool isInFront =
        toplevel != nullptr && (toplevel->isActive || QGuiApplication::focusWindow() != nullptr);
    return isInFront && !isOurs(*toplevel) ? applicationName({toplevel->applicationId}) : QString();
}

} // namespace corvatto
