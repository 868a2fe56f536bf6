#include "platform/freedesktop/FreedesktopWorkspace.h"

#include <QDesktopServices>
#include <QStandardPaths>

namespace corvatto {

FreedesktopWorkspace::FreedesktopWorkspace()
    : m_entries(QStandardPaths::standardLocations(QStandardPaths::ApplicationsLocation),
                desktopEntryLanguages()) {}

bool FreedesktopWorkspace::openURL(const QUrl& url) {
    return QDesktopServices::openUrl(url);
}

QString FreedesktopWorkspace::applicationName(const QStringList& identifiers) {
    for (const QString& identifier : identifiers) {
        if (const auto name = m_entries.nameForWindowClass(identifier)) {
            return *name;
        }
    }
    return identifiers.value(identifiers.size() - 1);
}

} // namespace corvatto
