#include "platform/qt/IniUserDefaults.h"

#include "base/Diagnostics.h"
#include "base/FileSystem.h"

#include <QFileInfo>

#include <chrono>

namespace corvatto {

IniUserDefaults::IniUserDefaults(const QString& path) : m_path(path) {
    if (m_path.isEmpty()) {
        printLine(u"[UserDefaults] ERROR: There is no home directory, settings are not kept.");
        return;
    }
    if (const auto error = createDirectories(QFileInfo(m_path).path())) {
        printLine(QStringLiteral("[UserDefaults] ERROR: Cannot create %1: %2")
                      .arg(error->path, error->description()));
    }
    for (const QString& mine : {QFileInfo(m_path).path(), m_path}) {
        makePrivate(mine);
    }
    m_settings.emplace(m_path, QSettings::IniFormat);
    m_settings->allKeys(); // parses all of the file; until then its form is not known
    if (m_settings->status() == QSettings::FormatError) {
        printLine(QStringLiteral("[UserDefaults] ERROR: Some lines of %1 are no settings and are ignored.")
                      .arg(m_path));
    } else if (m_settings->status() != QSettings::NoError) {
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
    m_settings->sync();
    Q_EMIT didChange();
}

QVariant IniUserDefaults::storedObject(const QString& key) const {
    return m_settings ? m_settings->value(key) : m_kept.value(key);
}

void IniUserDefaults::setObject(const QString& key, const QVariant& value) {
    if (m_settings) {
        m_settings->setValue(key, value);
        write();
    } else {
        m_kept[key] = value;
    }
    Q_EMIT didChange();
}

void IniUserDefaults::write() {
    m_settings->sync();
    // The status of settings keeps their first error for good. Those of a second object on the same file
    // speak of what is still unwritten.
    const bool failed = QSettings(m_path, QSettings::IniFormat).status() != QSettings::NoError;
    if (failed && !m_complained) {
        printLine(QStringLiteral("[UserDefaults] ERROR: Cannot write %1").arg(m_path));
    }
    m_complained = failed;
}

} // namespace corvatto
