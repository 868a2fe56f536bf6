#include "platform/qt/IniUserDefaults.h"

#include "platform/Diagnostics.h"
#include "platform/FileSystem.h"

#include <QFileInfo>

#include <chrono>

namespace corvatto {

IniUserDefaults::IniUserDefaults(const QString& path)
    : m_path(path), m_settings(path.isEmpty() ? QStringLiteral("/dev/null") : path, QSettings::IniFormat) {
    if (m_path.isEmpty()) {
        printLine(u"[UserDefaults] ERROR: There is no home directory, settings are not kept.");
        return;
    }
    if (const auto error = createDirectories(QFileInfo(m_path).path())) {
        printLine(QStringLiteral("[UserDefaults] ERROR: Cannot create %1: %2")
                      .arg(error->path, error->description()));
    }
    if (m_settings.status() != QSettings::NoError) {
        printLine(QStringLiteral("[UserDefaults] ERROR: Cannot read %1, the defaults hold.").arg(m_path));
    }
    // An editor saves in several steps; one look after the last of them is enough.
    m_reload.setSingleShot(true);
    m_reload.setInterval(std::chrono::milliseconds(50));
    connect(&m_reload, &QTimer::timeout, this, &IniUserDefaults::fileChanged);
    connect(&m_watcher, &QFileSystemWatcher::fileChanged, &m_reload, qOverload<>(&QTimer::start));
    connect(&m_watcher, &QFileSystemWatcher::directoryChanged, &m_reload, qOverload<>(&QTimer::start));
    watch();
}

void IniUserDefaults::watch() {
    // The directory tells of a file that is created or replaced, the file of one that is written in place.
    m_watcher.addPath(QFileInfo(m_path).path());
    if (QFileInfo::exists(m_path)) {
        m_watcher.addPath(m_path);
    }
}

void IniUserDefaults::fileChanged() {
    watch();
    m_settings.sync();
    Q_EMIT didChange();
}

QVariant IniUserDefaults::storedObject(const QString& key) const {
    return m_settings.value(key);
}

void IniUserDefaults::setObject(const QString& key, const QVariant& value) {
    m_settings.setValue(key, value);
    write();
    Q_EMIT didChange();
}

void IniUserDefaults::write() {
    m_settings.sync();
    const bool failed = m_settings.status() != QSettings::NoError || !m_settings.isWritable();
    if (failed && !m_complained) {
        printLine(QStringLiteral("[UserDefaults] ERROR: Cannot write %1").arg(m_path));
    }
    m_complained = failed;
}

} // namespace corvatto
