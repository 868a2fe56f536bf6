#include "platform/qt/ApplicationSupport.h"

#include <QFile>

namespace corvatto {
namespace {

QString baseDirectory(const char* variable, const QString& belowHome) {
    QString configured = QFile::decodeName(qgetenv(variable));
    if (configured.startsWith(QLatin1Char('/'))) { // relative paths are invalid, and ignored
        return configured;
    }
    const QString home = QFile::decodeName(qgetenv("HOME"));
    return home.startsWith(QLatin1Char('/')) ? home + belowHome : QString();
}

} // namespace

QString applicationSupportDirectory() {
    return baseDirectory("XDG_DATA_HOME", QStringLiteral("/.local/share"));
}

QString settingsFilePath() {
    const QString directory = baseDirectory("XDG_CONFIG_HOME", QStringLiteral("/.config"));
    return directory.isEmpty() ? QString() : directory + QStringLiteral("/corvatto/corvatto.ini");
}

} // namespace corvatto
